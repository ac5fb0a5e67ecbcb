#include "bus/usb_bus.h"

#include <algorithm>
#include <atomic>
#include <system_error>

#include "base/transport_identity.h"
#include "bus/libusb_code.h"
#include "platform/base/error.h"
#include "platform/threads/all_signals_blocked.h"
#include "qvn/result_codes.h"
#include "qvn/transport/log.h"

namespace qvn::usb1 {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

// How long the bus's thread leaves the events to others that have just waited.
constexpr milliseconds kLinger{1};

// No wait in libusb is longer; who waits looks again.
constexpr microseconds kLongestWait{std::chrono::seconds(60)};

timeval timevalOf(microseconds time) {
  return {.tv_sec = static_cast<time_t>(time.count() / 1'000'000),
          .tv_usec = static_cast<suseconds_t>(time.count() % 1'000'000)};
}

}  // namespace

// While it exists the bus's thread leaves the events to its maker.
class UsbBus::Waiting {
 public:
  explicit Waiting(UsbBus& bus) : bus_(bus) {
    const std::lock_guard<std::mutex> lock(bus_.mutex_);
    ++bus_.waiting_;
    ++bus_.waits_;
    if (bus_.stage_ == Stage::Handling) libusb_interrupt_event_handler(bus_.context_);
  }
  Waiting(const Waiting&) = delete;
  Waiting& operator=(const Waiting&) = delete;
  ~Waiting() {
    const std::lock_guard<std::mutex> lock(bus_.mutex_);
    if (--bus_.waiting_ == 0 && bus_.stage_ == Stage::Aside) bus_.changed_.notify_all();
  }

 private:
  UsbBus& bus_;
};

UsbBus::~UsbBus() {
  if (thread_.joinable()) {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      stopping_ = true;
      changed_.notify_all();
      libusb_interrupt_event_handler(context_);
    }
    thread_.join();
  }
  disposed_.clear();
  if (context_ != nullptr) libusb_exit(context_);
}

std::uint32_t UsbBus::start() {
  const platform::AllSignalsBlocked blocked;  // libusb starts a thread too
  if (const int error = libusb_init(&context_); error != LIBUSB_SUCCESS) {
    context_ = nullptr;
    transportLog(kLogComponent, log_level::kError, std::string("libusb_init: ") + libusb_error_name(error));
    return codeFromError(error);
  }
  try {
    thread_ = std::thread([this] { serve(); });
  } catch (const std::system_error&) {
    return platform::kNotEnoughMemory;
  }
  return QRN_ERROR_SUCCESS;
}

void UsbBus::waitFor(int& done, Clock::time_point deadline) {
  if (isFinished(done)) return;
  const Waiting waiting(*this);
  while (!isFinished(done)) {
    const auto now = Clock::now();
    if (now >= deadline) return;
    const auto left =
        deadline - now < kLongestWait ? std::chrono::ceil<microseconds>(deadline - now) : kLongestWait;
    timeval time = timevalOf(left);
    libusb_handle_events_timeout_completed(context_, &time, &done);
  }
}

bool UsbBus::isFinished(int& done) { return std::atomic_ref<int>(done).load(std::memory_order_acquire) != 0; }

void UsbBus::finish(int& done) { std::atomic_ref<int>(done).store(1, std::memory_order_release); }

void UsbBus::finishFromOutside(int& done) {
  finish(done);
  libusb_interrupt_event_handler(context_);
}

void UsbBus::dispose(std::shared_ptr<void> object) {
  const std::lock_guard<std::mutex> lock(mutex_);
  disposed_.push_back(std::move(object));
  changed_.notify_all();
  if (stage_ == Stage::Handling) libusb_interrupt_event_handler(context_);
}

void UsbBus::serve() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (!stopping_) {
    if (!disposed_.empty()) {
      std::vector<std::shared_ptr<void>> ending;
      ending.swap(disposed_);
      lock.unlock();
      ending.clear();
      lock.lock();
    } else if (waiting_ != 0) {
      stage_ = Stage::Aside;
      changed_.wait(lock, [this] { return stopping_ || waiting_ == 0 || !disposed_.empty(); });
    } else if (waits_ != lingeredFor_) {
      stage_ = Stage::Lingering;
      lingeredFor_ = waits_;
      changed_.wait_for(lock, kLinger, [this] { return stopping_ || !disposed_.empty(); });
    } else {
      stage_ = Stage::Handling;
      lock.unlock();
      timeval time = timevalOf(kLongestWait);
      libusb_handle_events_timeout_completed(context_, &time, nullptr);
      lock.lock();
      stage_ = Stage::Aside;
    }
  }
}

}  // namespace qvn::usb1
