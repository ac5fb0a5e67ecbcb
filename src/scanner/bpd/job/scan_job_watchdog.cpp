#include "scanner/bpd/job/scan_job_watchdog.h"

#include <algorithm>
#include <array>
#include <utility>

#include "qvn/result_codes.h"
#include "scanner/bpd/bpd_scanner.h"

namespace qvn {
namespace {

constexpr std::uint64_t kFirstWait = 25000;

// By phase. After a long one the next wait for data is long again.
struct Wait {
  std::uint64_t milliseconds;
  bool nextIsLong;
};
constexpr std::array<Wait, 6> kWaits = {{
    {90000, false},  // Warming
    {6000, false},   // Data
    {6000, true},    // PageStart
    {15000, true},   // PageEnd
    {10000, false},  // Cancelling
    {6000, false},   // ReadError
}};
constexpr std::uint64_t kLongDataWait = 15000;

}  // namespace

ScanJobWatchdog::ScanJobWatchdog(BpdScanner& scanner)
    : scanner_(scanner), event_(false, false, "", false), runnable_(*this, &ScanJobWatchdog::run) {}

ScanJobWatchdog::~ScanJobWatchdog() {
  if (!threadLock_.wasTaken()) return;
  stop();
  waitForEnd();
}

void ScanJobWatchdog::start(std::uint32_t clientId) {
  const OperationLock::Turn turn(threadLock_);
  if (running_ && !stop_) return;
  thread_.reset();  // a thread that was stopped may be on its last steps
  clientId_ = clientId;
  {
    const std::lock_guard<std::mutex> phases(phaseLock_);
    phase_ = previousPhase_ = ScanPhase::Data;
  }
  longWait_ = true;
  stop_ = false;
  event_.reset();
  running_ = true;
  thread_ = std::make_unique<Thread>(runnable_);
  try {
    thread_->launch();
  } catch (...) {
    running_ = false;
    throw;
  }
}

void ScanJobWatchdog::stop() {
  stop_ = true;
  if (running_) event_.set();
}

void ScanJobWatchdog::setPhase(ScanPhase phase) {
  bool wakes = false;
  {
    const std::lock_guard<std::mutex> lock(phaseLock_);
    previousPhase_ = std::exchange(phase_, phase);
    // Reads that fail one after the other are no sign of life.
    wakes = phase_ != ScanPhase::ReadError || previousPhase_ != ScanPhase::ReadError;
  }
  if (wakes && running_) event_.set();
}

void ScanJobWatchdog::waitForEnd() {
  const OperationLock::Turn turn(threadLock_);
  if (running_) refuseInCallback("the watchdog is not over");
  thread_.reset();
}

std::uint32_t ScanJobWatchdog::run() {
  // Also when the scanner throws: the next job is to be watched over again.
  const struct Running {
    std::atomic<bool>& flag;
    ~Running() { flag = false; }
  } running{running_};
  platform::Milliseconds wait = multiplied(kFirstWait);
  while (!stop_) {
    if (!event_.wait(wait)) {
      if (!stop_) scanner_.scanJobTimeout(clientId_);
      break;
    }
    if (!stop_) wait = nextWait();
  }
  return QRN_ERROR_SUCCESS;
}

platform::Milliseconds ScanJobWatchdog::nextWait() {
  ScanPhase phase = ScanPhase::Data;
  {
    const std::lock_guard<std::mutex> lock(phaseLock_);
    phase = phase_;
    if (phase != ScanPhase::ReadError) phase_ = ScanPhase::Data;
  }
  const Wait& row = kWaits[static_cast<std::size_t>(phase)];
  if (phase == ScanPhase::Data && std::exchange(longWait_, false)) return multiplied(kLongDataWait);
  longWait_ = longWait_ || row.nextIsLong;
  return multiplied(row.milliseconds);
}

platform::Milliseconds ScanJobWatchdog::multiplied(std::uint64_t milliseconds) const {
  // The largest number would be a wait without end.
  return static_cast<platform::Milliseconds>(
      std::min<std::uint64_t>(multiplier_ * milliseconds, platform::kInfinite - 1));
}

}  // namespace qvn
