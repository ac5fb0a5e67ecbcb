// The simulated scanner of a CpdPrinter: what it answers to each ESC command.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "base/bytes.h"
#include "base/connection_id.h"
#include "esc/esc_commands.h"
#include "faults/fault_switches.h"
#include "page/scan_engine.h"
#include "page/scan_settings.h"

namespace sim {

class Scanner {
 public:
  Scanner(std::string model, ScanEngine& engine, const FaultSwitches& faults);

  // Carries out any command but go and abort, and gives the reply when there is one.
  std::optional<Bytes> answer(ConnectionId host, esc::Command command, ByteView bytes);

  // Good when the engine has begun the host's page.
  esc::Status beginPage(ConnectionId host);
  Bytes endOfPageStatus() const;

  const ScanSettings& settingsOf(ConnectionId host) { return hosts_[host]; }
  void connectionClosed(ConnectionId host);

  // Forgets who has locked it.
  void reset();

 private:
  esc::Status set(ScanSettings& settings, esc::Command command, ByteView bytes) const;
  esc::Status setParameters(ScanSettings& settings, std::string_view text) const;
  std::string versionText() const;
  std::string parametersText(const ScanSettings& settings) const;
  std::uint8_t sheetCount() const;

  const std::string model_;
  ScanEngine& engine_;
  const FaultSwitches& faults_;
  std::map<ConnectionId, ScanSettings> hosts_;
  std::optional<ConnectionId> copyLockedBy_;
  Bytes faxData_;
};

}  // namespace sim
