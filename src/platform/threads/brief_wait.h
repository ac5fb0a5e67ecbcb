// A wait that begins by looking again and again for a moment: to put a thread to sleep and to wake it on
// another processor takes several times as long as an exchange with a device nearby.
#pragma once

#include <atomic>
#include <chrono>
#include <thread>

namespace qvn::platform {

// Looks only while what was waited for last has come soon, and where another processor can bring it about.
class BriefWait {
 public:
  // Returns when `isReady`, which needs no lock, or else when `sleep`, which waits for it, has returned.
  template <typename IsReady, typename Sleep>
  void wait(const IsReady& isReady, const Sleep& sleep) {
    const auto begin = Clock::now();
    if (pays_.load(std::memory_order_relaxed)) look(isReady, begin + kLook);
    if (!isReady()) sleep();
    pays_.store(hasOthers_ && Clock::now() - begin < kSoon, std::memory_order_relaxed);
  }

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::microseconds kLook{50};
  static constexpr std::chrono::microseconds kSoon{100};  // a sleep that looking would have spared included
  static constexpr int kLooksAtOnce = 20;

  template <typename IsReady>
  static void look(const IsReady& isReady, Clock::time_point end) {
    do {
      for (int i = 0; i < kLooksAtOnce; ++i) {
        if (isReady()) return;
#if defined(__x86_64__) || defined(__i386__)
        __builtin_ia32_pause();
#endif
      }
      std::this_thread::yield();  // whoever is to bring it about may wait for this very processor
    } while (Clock::now() < end);
  }

  const bool hasOthers_ = std::thread::hardware_concurrency() > 1;
  std::atomic<bool> pays_{hasOthers_};
};

}  // namespace qvn::platform
