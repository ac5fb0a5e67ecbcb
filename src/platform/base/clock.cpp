#include "platform/base/clock.h"

#include <time.h>

#include <atomic>
#include <thread>

namespace qvn::platform {
namespace {

class SystemClock final : public Clock {
 public:
  std::uint64_t monotonicMilliseconds() override {
    const auto elapsed = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count());
  }

  std::chrono::system_clock::time_point now() override { return std::chrono::system_clock::now(); }

  void sleep(Milliseconds duration) override {
    if (duration == 0) {
      std::this_thread::yield();
      return;
    }
    do {
      std::this_thread::sleep_for(std::chrono::milliseconds(duration));
    } while (duration == kInfinite);
  }

  bool wait(std::unique_lock<std::mutex>& lock, std::condition_variable& condition, Milliseconds timeout,
            const std::function<bool()>& ready) override {
    if (timeout != kInfinite) return condition.wait_for(lock, std::chrono::milliseconds(timeout), ready);
    condition.wait(lock, ready);
    return true;
  }
};

// Never destroyed: threads may still wait while the process ends.
Clock& systemClock() {
  static Clock* const instance = new SystemClock;
  return *instance;
}

std::atomic<Clock*> replacementClock{nullptr};

}  // namespace

Clock::~Clock() = default;

Clock& clock() {
  Clock* const replacement = replacementClock.load(std::memory_order_acquire);
  return replacement != nullptr ? *replacement : systemClock();
}

Clock* replaceClock(Clock* replacement) {
  return replacementClock.exchange(replacement, std::memory_order_acq_rel);
}

bool clockIsReplaced() { return replacementClock.load(std::memory_order_acquire) != nullptr; }

std::uint32_t tickCount() { return static_cast<std::uint32_t>(clock().monotonicMilliseconds()); }

void sleep(Milliseconds duration) { clock().sleep(duration); }

LocalTime localTime(std::chrono::system_clock::time_point moment) {
  const auto whole = std::chrono::floor<std::chrono::seconds>(moment);
  const auto fraction = std::chrono::duration_cast<std::chrono::milliseconds>(moment - whole);
  const time_t seconds = std::chrono::system_clock::to_time_t(whole);
  tm parts{};
  localtime_r(&seconds, &parts);
  return LocalTime{.year = parts.tm_year + 1900,
                   .month = parts.tm_mon + 1,
                   .day = parts.tm_mday,
                   .hour = parts.tm_hour,
                   .minute = parts.tm_min,
                   .second = parts.tm_sec,
                   .millisecond = static_cast<int>(fraction.count())};
}

}  // namespace qvn::platform
