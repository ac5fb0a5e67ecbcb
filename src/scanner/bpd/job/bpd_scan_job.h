// BpdScanJob: what is known of a Bpd scanner's job, from its start until the next one's.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "common/threads/event.h"
#include "platform/base/clock.h"

namespace qvn {

// Any thread, but for the name of the job's object.
class BpdScanJob {
 public:
  BpdScanJob() : endSignal_(true, false, "", false) {}

  // Another job takes the place of the last one; the device's mode and its blocks are no part of a job.
  void begin(std::uint32_t clientId, bool isTracked);
  // There is no job any more, nor a device for one.
  void drop();

  std::uint32_t clientId() const { return clientId_; }
  // Tells this job from an earlier one.
  std::uint32_t number() const { return number_; }
  // Clients are told of all that is exchanged with the device.
  bool isTracked() const { return isTracked_; }

  // The job has been started and not ended.
  bool isActive() const { return isActive_; }
  void setActive(bool isActive) { isActive_ = isActive; }
  // The device is delivering data, as far as that has been heard (see BpdScanner::isScanning).
  bool isScanning() const { return isScanning_; }
  void setScanning(bool isScanning) { isScanning_ = isScanning; }
  // The watchdog has given the job up.
  bool hasTimedOut() const { return hasTimedOut_; }
  void setTimedOut() { hasTimedOut_ = true; }

  bool isInHostMode() const { return isInHostMode_; }
  void setInHostMode(bool isInHostMode) { isInHostMode_ = isInHostMode; }
  std::uint32_t dataBlockCount() const { return dataBlockCount_; }
  void countDataBlock() { ++dataBlockCount_; }

  // The job's object in the device: written by the thread that starts the job, read when that has ended.
  std::string& objectName() { return objectName_; }

  // The client has ended the job: the watchdog need not.
  void signalEnd() { endSignal_.set(); }
  // False when the time is up.
  bool waitForEndSignal(platform::Milliseconds time) { return endSignal_.wait(time); }

 private:
  std::atomic<std::uint32_t> clientId_{0};
  std::atomic<std::uint32_t> number_{0};
  std::atomic<bool> isTracked_{false};
  std::atomic<bool> isActive_{false};
  std::atomic<bool> isScanning_{false};
  std::atomic<bool> hasTimedOut_{false};
  std::atomic<bool> isInHostMode_{false};
  std::atomic<std::uint32_t> dataBlockCount_{0};
  std::string objectName_;
  Event endSignal_;
};

}  // namespace qvn
