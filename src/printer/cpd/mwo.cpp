#include "printer/cpd/mwo.h"

#include <algorithm>

#include "common/exception.h"
#include "common/logging/basic_logger.h"
#include "common/settings/application_settings.h"
#include "common/settings/settings_store.h"
#include "device/printer.h"
#include "platform/base/clock.h"
#include "qvn/result_codes.h"

namespace qvn {
namespace {

constexpr std::uint32_t kMaxWait = 5000;
constexpr std::uint32_t kBuffersPerSignal = 5;
constexpr platform::Milliseconds kWakeWait = 3000;
constexpr platform::Milliseconds kIdlePoll = 75;
constexpr platform::Milliseconds kDrainPoll = 100;
constexpr platform::Milliseconds kRetryPause = 1000;

// The process's limits, and the lock for reading and replacing both at once.
CriticalSection processLimitsLock;
MwoLimits processLimits;

}  // namespace

Mwo::Mwo(Printer& printer) : printer_(printer), wakeEvent_(true, false, "", false) { readLimits(); }

Mwo::~Mwo() {
  purge_ = true;
  stopThread();
}

void Mwo::readLimits() {
  CriticalSectionLock lock(processLimitsLock);
  const ApplicationSettings settings;
  MwoLimits read;
  const auto readMark = [&](const LongSetting& setting, std::uint32_t& mark, std::uint32_t current) {
    return settings.getLongOrDefault(setting.key, setting.name, mark, current, SettingsStore::kLocal);
  };
  const bool bothRead = readMark(setting::kMwoBufferHwm, read.highWaterMark, processLimits.highWaterMark) &&
                        readMark(setting::kMwoBufferLwm, read.lowWaterMark, processLimits.lowWaterMark);
  if (bothRead && read.highWaterMark != 0 && read.highWaterMark > read.lowWaterMark) processLimits = read;
}

MwoLimits Mwo::limits() {
  CriticalSectionLock lock(processLimitsLock);
  return processLimits;
}

std::uint32_t Mwo::waitTime() const {
  const MwoLimits marks = limits();
  const std::uint64_t wait = std::uint64_t{marks.highWaterMark - marks.lowWaterMark} * lastWriteTime_.load();
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(wait, kMaxWait));
}

std::uint32_t Mwo::print(Data& request) {
  if (firstRequest_.exchange(false)) return printer_.doWrite(request);
  if (!startThread()) {
    logError(log_component::server(), [] { return LogText() << "Mwo::print() thread is not running"; });
    return printer_.doWrite(request);
  }

  const std::uint32_t highWaterMark = limits().highWaterMark;
  if (queueSize() > highWaterMark) {
    platform::sleep(waitTime());
    const std::uint32_t size = queueSize();
    if (size > highWaterMark) {
      logDetail(log_component::server(), [&] {
        return LogText() << "Mwo::print() buffers are full, buffers=" << size << "queueSize=" << size;
      });
      request.setCount(0);
      return QRN_ERROR_INSUFFICIENT_BUFFER;
    }
  }

  std::uint32_t count = 0;
  {
    CriticalSectionLock lock(queueLock_);
    queue_.push_back(request);
    count = static_cast<std::uint32_t>(queue_.size());
  }
  if (count > highWaterMark) {
    const std::uint32_t wait = waitTime();
    logDetail(log_component::server(), [&] { return LogText() << "Mwo::print() wait(mS)=" << wait; });
    platform::sleep(wait);
  }
  if (count % kBuffersPerSignal == 0 && firstSignalPending_.exchange(false)) wakeEvent_.set();
  request.setCount(request.getLength());
  return QRN_ERROR_SUCCESS;
}

std::uint32_t Mwo::write() {
  while (queueSize() != 0 || !stop_) {
    if (!wakeEvent_.wait(kWakeWait)) wakeEvent_.set();
    Data* const buffer = oldest();
    if (buffer == nullptr) {
      platform::sleep(kIdlePoll);
    } else if (purge_) {
      removeOldest();
      logDetail(log_component::server(), [] { return LogText() << "Mwo::write() purged a buffer"; });
    } else {
      writeOldest(*buffer);
    }
  }
  return QRN_ERROR_SUCCESS;
}

void Mwo::writeOldest(Data& buffer) {
  const std::uint32_t begin = platform::tickCount();
  const std::uint32_t rc = printer_.doWrite(buffer);
  const std::uint32_t end = platform::tickCount();
  if (rc == QRN_ERROR_SUCCESS) {
    lastWriteTime_ = end - begin;
  } else {
    logError(log_component::server(), [&] {
      return LogText() << "Mwo::writeData() Printer::writePrintData() failed"
                       << " errorCode=" << rc;
    });
    platform::sleep(kRetryPause);
  }
  // What is left of a partly written buffer is written on the next pass.
  if (buffer.getLength() == 0) removeOldest();
}

std::uint32_t Mwo::purge() {
  logDetail(log_component::server(), [] { return LogText() << "Mwo::purge()"; });
  purge_ = true;
  return QRN_ERROR_SUCCESS;
}

void Mwo::stop() {
  logDetail(log_component::server(), [&] {
    return LogText() << "Mwo::stop() handle=" << printer_.getHandle() << " list size=" << queueSize();
  });
  wakeEvent_.set();
  while (queueSize() != 0) platform::sleep(kDrainPoll);
  stopThread();
  purge_ = false;
}

bool Mwo::startThread() {
  CriticalSectionLock lock(threadLock_);
  if (threadRunning_) return true;
  stop_ = false;
  try {
    runnable_ = std::make_unique<MethodRunnable<Mwo>>(*this, &Mwo::write);
    thread_ = std::make_unique<Thread>(*runnable_);
    thread_->start();
    threadRunning_ = true;
  } catch (const Win32Exception&) {
    thread_.reset();
    runnable_.reset();
  }
  return threadRunning_;
}

void Mwo::stopThread() {
  CriticalSectionLock lock(threadLock_);
  if (!threadRunning_) return;
  stop_ = true;
  wakeEvent_.set();
  thread_->waitFor(platform::kInfinite);
  thread_.reset();
  runnable_.reset();
  threadRunning_ = false;
}

std::uint32_t Mwo::queueSize() {
  CriticalSectionLock lock(queueLock_);
  return static_cast<std::uint32_t>(queue_.size());
}

Data* Mwo::oldest() {
  CriticalSectionLock lock(queueLock_);
  return queue_.empty() ? nullptr : &queue_.front();
}

void Mwo::removeOldest() {
  // Freed outside the lock.
  std::list<Data> removed;
  CriticalSectionLock lock(queueLock_);
  removed.splice(removed.begin(), queue_, queue_.begin());
}

}  // namespace qvn
