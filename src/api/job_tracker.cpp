#include "api/job_tracker.h"

namespace qvn {

void JobTracker::add(std::uint32_t printerHandle) {
  CriticalSectionLock lock(lock_);
  if (!jobs_.contains(printerHandle)) jobs_[printerHandle] = std::make_shared<std::atomic<bool>>(false);
}

void JobTracker::remove(std::uint32_t printerHandle) {
  CriticalSectionLock lock(lock_);
  jobs_.erase(printerHandle);
}

bool JobTracker::requestCancel(std::uint32_t printerHandle) {
  const CancelFlag flag = find(printerHandle);
  if (flag) *flag = true;
  return flag != nullptr;
}

JobTracker::CancelFlag JobTracker::find(std::uint32_t printerHandle) {
  CriticalSectionLock lock(lock_);
  const auto found = jobs_.find(printerHandle);
  return found == jobs_.end() ? nullptr : found->second;
}

}  // namespace qvn
