// The simulated scanner: what it answers to each ESC command, who may scan, and the sheets in its feeder.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "connection_id.h"
#include "esc_commands.h"
#include "fault_switches.h"
#include "scan_settings.h"

namespace sim {

class Scanner {
 public:
  Scanner(std::string model, std::uint32_t sheets, const FaultSwitches& faults);

  // Carries out any command but go and abort, and gives the reply when there is one.
  std::optional<Bytes> answer(ConnectionId host, esc::Command command, ByteView bytes);

  // Good when the host may have its page now: the scanner is sending then, until endPage.
  esc::Status beginPage(ConnectionId host);
  void endPage() { sendingTo_.reset(); }
  bool isSendingTo(ConnectionId host) const { return sendingTo_ == host; }
  // The page begun last, from 1 on.
  std::uint64_t pageNumber() const { return pageNumber_; }
  Bytes endOfPageStatus() const;

  const ScanSettings& settingsOf(ConnectionId host) { return hosts_[host]; }
  void connectionClosed(ConnectionId host);

  void load(std::uint32_t sheets) { sheets_ = sheets; }
  // Forgets who has locked it.
  void reset();

 private:
  bool isHeldFrom(ConnectionId host, std::optional<ConnectionId> lockedBy) const;
  esc::Status set(ScanSettings& settings, esc::Command command, ByteView bytes) const;
  esc::Status setParameters(ScanSettings& settings, std::string_view text) const;
  std::string versionText() const;
  std::string parametersText(const ScanSettings& settings) const;
  std::uint8_t sheetCount() const;

  const std::string model_;
  std::uint32_t sheets_;
  const FaultSwitches& faults_;
  std::map<ConnectionId, ScanSettings> hosts_;
  std::optional<ConnectionId> scanLockedBy_;
  std::optional<ConnectionId> copyLockedBy_;
  std::optional<ConnectionId> sendingTo_;
  std::uint64_t pageNumber_ = 0;
  Bytes faxData_;
};

}  // namespace sim
