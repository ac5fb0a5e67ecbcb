// ScanJobWatchdog: ends a scan job whose data stops.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

#include "common/clients/operation_lock.h"
#include "common/threads/event.h"
#include "common/threads/runnable.h"
#include "common/threads/thread.h"
#include "platform/base/clock.h"

namespace qvn {

class BpdScanner;

// What was heard last of a job, and with it how long the next may take.
enum class ScanPhase : std::uint32_t {
  Warming = 0,
  Data = 1,
  PageStart = 2,
  PageEnd = 3,
  Cancelling = 4,
  ReadError = 5
};

// One thread per running job, which sleeps until something is heard or the time is up. Any thread may call.
class ScanJobWatchdog {
 public:
  explicit ScanJobWatchdog(BpdScanner& scanner);
  ~ScanJobWatchdog();
  ScanJobWatchdog(const ScanJobWatchdog&) = delete;
  ScanJobWatchdog& operator=(const ScanJobWatchdog&) = delete;

  // All times are multiplied by it.
  void setMultiplier(std::uint32_t multiplier) { multiplier_ = multiplier; }

  // Watches over a job of the client, unless one is being watched. When the time is up the scanner is told,
  // once (BpdScanner::scanJobTimeout).
  void start(std::uint32_t clientId);
  // Does not wait for the thread, which may be the caller's.
  void stop();
  void setPhase(ScanPhase phase);

  // Returns when a thread that was stopped, or has told the scanner, is gone. Not on that thread; inside a
  // callback it is refused while the thread runs.
  void waitForEnd();

 private:
  std::uint32_t run();
  // How long the next sign of the job may take, by what was heard.
  platform::Milliseconds nextWait();
  platform::Milliseconds multiplied(std::uint64_t milliseconds) const;

  BpdScanner& scanner_;
  Event event_;
  std::atomic<bool> running_{false};
  std::atomic<bool> stop_{false};
  std::atomic<std::uint32_t> multiplier_{1};
  std::atomic<std::uint32_t> clientId_{0};

  // The thread's own: whether the next wait for data is a long one.
  bool longWait_ = true;

  std::mutex phaseLock_;  // guards the phases
  ScanPhase phase_ = ScanPhase::Data;
  ScanPhase previousPhase_ = ScanPhase::Data;

  OperationLock threadLock_{LockRank::Watchdog};  // guards the thread; the thread itself never takes it
  MethodRunnable<ScanJobWatchdog> runnable_;
  std::unique_ptr<Thread> thread_;
};

}  // namespace qvn
