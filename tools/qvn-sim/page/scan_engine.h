// What the scanners of all families have: sheets in the feeder, a host that has it locked, and a page that is
// sent to one host at a time.
#pragma once

#include <cstdint>
#include <optional>

#include "base/connection_id.h"
#include "faults/fault_switches.h"
#include "page/scan_settings.h"

namespace sim {

class ScanEngine {
 public:
  enum class Start : std::uint8_t { Good, Busy, Impossible, FeederEmpty };

  ScanEngine(std::uint32_t sheets, const FaultSwitches& faults) : sheets_(sheets), faults_(faults) {}

  // Whether the host has it now; not while another one has it, or is sent a page.
  bool lock(ConnectionId host);
  void unlock(ConnectionId host);
  bool isLockedBy(ConnectionId host) const { return lockedBy_ == host; }

  // Good when the host may have its page now: it is being sent then, until endPage.
  Start beginPage(ConnectionId host, const ScanSettings& settings);
  void endPage() { sendingTo_.reset(); }
  bool isSending() const { return sendingTo_.has_value(); }
  bool isSendingTo(ConnectionId host) const { return sendingTo_ == host; }
  // The page begun last, from 1 on.
  std::uint64_t pageNumber() const { return pageNumber_; }

  void load(std::uint32_t sheets) { sheets_ = sheets; }
  std::uint32_t sheets() const { return sheets_; }

  void connectionClosed(ConnectionId host);
  // Forgets who has locked it.
  void reset() { lockedBy_.reset(); }

 private:
  bool isHeldFrom(ConnectionId host) const;

  std::uint32_t sheets_;
  const FaultSwitches& faults_;
  std::optional<ConnectionId> lockedBy_;
  std::optional<ConnectionId> sendingTo_;
  std::uint64_t pageNumber_ = 0;
};

}  // namespace sim
