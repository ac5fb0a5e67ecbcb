#include "printer/cpd/mwo.h"

#include <algorithm>

#include "common/clients/operation_lock.h"
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
constexpr platform::Milliseconds kRetryPause = 1000;

// The process's, both marks at once.
std::atomic<MwoLimits> processLimits;
static_assert(std::atomic<MwoLimits>::is_always_lock_free);

void readLimits() {
  const ApplicationSettings settings;
  const MwoLimits current = processLimits;
  MwoLimits read;
  const auto readMark = [&](const LongSetting& setting, std::uint32_t& mark, std::uint32_t byDefault) {
    return settings.getLongOrDefault(setting.key, setting.name, mark, byDefault, SettingsStore::kLocal);
  };
  // Both, whatever the first comes to: reading a setting stores its default.
  const bool isHighRead = readMark(setting::kMwoBufferHwm, read.highWaterMark, current.highWaterMark);
  const bool isLowRead = readMark(setting::kMwoBufferLwm, read.lowWaterMark, current.lowWaterMark);
  if (isHighRead && isLowRead && read.highWaterMark != 0 && read.highWaterMark > read.lowWaterMark)
    processLimits = read;
}

}  // namespace

Mwo::Mwo(Printer& printer) : printer_(printer), wakeEvent_(true, false, "", false) { readLimits(); }

Mwo::~Mwo() {
  purge_ = true;
  endThread();
}

MwoLimits Mwo::limits() { return processLimits; }

std::uint32_t Mwo::waitTime() const {
  const MwoLimits marks = limits();
  const std::uint64_t wait = std::uint64_t{marks.highWaterMark - marks.lowWaterMark} * lastWriteTime_.load();
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(wait, kMaxWait));
}

void Mwo::begin() {
  CriticalSectionLock lock(lock_);
  phase_ = Phase::Taking;
  cancelRequested_ = false;
}

std::uint32_t Mwo::print(Data& request) {
  if (firstRequest_.exchange(false)) return printer_.doWrite(request);

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
  switch (queue(request, count)) {
    case Phase::NoJob:
      logError(log_component::server(), [] { return LogText() << "Mwo::print() thread is not running"; });
      return printer_.doWrite(request);
    case Phase::Ending:
      request.setCount(0);
      return QRN_ERROR_INVALID_FUNCTION;
    case Phase::Taking:
      break;
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

Mwo::Phase Mwo::queue(const Data& request, std::uint32_t& count) {
  // Copied outside the lock.
  std::list<Data> taken(1, request);
  CriticalSectionLock lock(lock_);
  if (phase_ != Phase::Taking) return phase_;
  if (!writer_) {
    try {
      auto writer = std::make_shared<Writer>(*this);
      writer->thread.launch();
      writer_ = std::move(writer);
    } catch (const Win32Exception&) {
      return Phase::NoJob;
    }
  }
  queue_.splice(queue_.end(), taken);
  count = static_cast<std::uint32_t>(queue_.size());
  return Phase::Taking;
}

std::uint32_t Mwo::write() {
  while (true) {
    if (!wakeEvent_.wait(kWakeWait)) wakeEvent_.set();
    const Step step = next();
    if (step.ending && !purge_ && cancelRequested_.exchange(false)) {
      cancel();
    } else if (step.oldest == nullptr) {
      if (step.ending) return QRN_ERROR_SUCCESS;
      platform::sleep(kIdlePoll);
    } else if (purge_) {
      removeOldest();
      logDetail(log_component::server(), [] { return LogText() << "Mwo::write() purged a buffer"; });
    } else {
      writeOldest(*step.oldest);
    }
  }
}

Mwo::Step Mwo::next() {
  CriticalSectionLock lock(lock_);
  return {queue_.empty() ? nullptr : &queue_.front(), phase_ == Phase::Ending};
}

void Mwo::writeOldest(Data& buffer) {
  const std::uint32_t begin = platform::tickCount();
  const std::uint32_t rc = resultOf([&] { return printer_.doWrite(buffer); });
  const std::uint32_t end = platform::tickCount();
  if (rc == QRN_ERROR_SUCCESS) {
    lastWriteTime_ = end - begin;
  } else {
    logError(log_component::server(), [&] {
      return LogText() << "Mwo::writeData() Printer::writePrintData() failed"
                       << "errorCode=" << rc;
    });
    platform::sleep(kRetryPause);
  }
  // What is left of a partly written buffer is written on the next pass.
  if (buffer.getLength() == 0) removeOldest();
}

void Mwo::cancel() {
  const std::uint32_t rc = resultOf([&] { return printer_.doCancelPrint(); });
  if (rc == QRN_ERROR_SUCCESS) return;
  logError(log_component::server(),
           [&] { return LogText() << "Mwo::cancel() Printer::doCancelPrint() failed errorCode=" << rc; });
}

void Mwo::removeOldest() {
  // Freed outside the lock.
  std::list<Data> removed;
  CriticalSectionLock lock(lock_);
  removed.splice(removed.begin(), queue_, queue_.begin());
}

std::uint32_t Mwo::purge() {
  logDetail(log_component::server(), [] { return LogText() << "Mwo::purge()"; });
  purge_ = true;
  return QRN_ERROR_SUCCESS;
}

void Mwo::abandon() {
  purge();
  CriticalSectionLock lock(lock_);
  phase_ = writer_ ? Phase::Ending : Phase::NoJob;
}

void Mwo::requestCancel() { cancelRequested_ = true; }

void Mwo::stop() {
  logDetail(log_component::server(), [&] {
    return LogText() << "Mwo::stop() handle=" << printer_.getHandle() << " list size=" << queueSize();
  });
  endThread();
}

void Mwo::endThread() {
  std::shared_ptr<Writer> writer;
  {
    CriticalSectionLock lock(lock_);
    writer = writer_;
    phase_ = writer ? Phase::Ending : Phase::NoJob;
  }
  if (writer) {
    wakeEvent_.set();
    writer->thread.waitFor(platform::kInfinite);
  }
  CriticalSectionLock lock(lock_);
  // Of two that waited the first does it.
  if (writer_ != writer) return;
  writer_.reset();
  phase_ = Phase::NoJob;
  queue_.clear();  // empty, unless the thread failed
  purge_ = false;
}

std::uint32_t Mwo::queueSize() {
  CriticalSectionLock lock(lock_);
  return static_cast<std::uint32_t>(queue_.size());
}

}  // namespace qvn
