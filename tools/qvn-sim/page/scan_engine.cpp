#include "page/scan_engine.h"

namespace sim {

bool ScanEngine::lock(ConnectionId host) {
  if (faults_.busy() || isHeldFrom(host)) return false;
  lockedBy_ = host;
  return true;
}

void ScanEngine::unlock(ConnectionId host) {
  if (lockedBy_ == host) lockedBy_.reset();
}

ScanEngine::Start ScanEngine::beginPage(ConnectionId host, const ScanSettings& settings) {
  if (sendingTo_ || isHeldFrom(host)) return Start::Busy;
  if (!settings.isPossible()) return Start::Impossible;
  if (settings.origin == PageOrigin::Feeder) {
    if (sheets_ == 0) return Start::FeederEmpty;
    --sheets_;
  }
  sendingTo_ = host;
  ++pageNumber_;
  return Start::Good;
}

void ScanEngine::connectionClosed(ConnectionId host) {
  unlock(host);
  if (sendingTo_ == host) sendingTo_.reset();
}

bool ScanEngine::isHeldFrom(ConnectionId host) const {
  return (lockedBy_ && lockedBy_ != host) || (sendingTo_ && sendingTo_ != host);
}

}  // namespace sim
