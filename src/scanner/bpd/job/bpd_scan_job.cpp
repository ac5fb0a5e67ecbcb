#include "scanner/bpd/job/bpd_scan_job.h"

namespace qvn {

void BpdScanJob::begin(std::uint32_t clientId, bool isTracked) {
  objectName_.clear();
  clientId_ = clientId;
  ++number_;
  hasTimedOut_ = false;
  endSignal_.reset();
  isTracked_ = isTracked;
}

void BpdScanJob::drop() {
  isScanning_ = false;
  isActive_ = false;
  isInHostMode_ = false;
  endSignal_.set();
}

}  // namespace qvn
