#include "platform/threads/wait_word.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <condition_variable>
#include <ctime>
#include <mutex>

namespace qvn::platform {
namespace {

// The waiters of this process that wait by a clock other than the system's. Futexes know only system time, so
// these wait for a condition of the clock's instead.
struct ClockWaiters {
  std::mutex mutex;
  std::condition_variable changed;
};

ClockWaiters& clockWaiters() {
  static auto& instance = *new ClockWaiters;  // Never destroyed: threads may wait while the process ends.
  return instance;
}

std::atomic<std::uint32_t> clockWaiterCount{0};

void waitForChange(WaitWord& word, std::uint32_t seen, Milliseconds limit) {
  static_assert(sizeof(WaitWord) == sizeof(std::uint32_t));
  const timespec relative{.tv_sec = static_cast<time_t>(limit / 1000),
                          .tv_nsec = static_cast<long>(limit % 1000) * 1'000'000};
  syscall(SYS_futex, &word, FUTEX_WAIT, seen, limit == kInfinite ? nullptr : &relative, nullptr, 0);
}

bool waitByClock(Milliseconds timeout, const std::function<bool()>& take) {
  ClockWaiters& waiters = clockWaiters();
  std::unique_lock lock(waiters.mutex);
  clockWaiterCount.fetch_add(1);
  const bool taken = clock().wait(lock, waiters.changed, timeout, take);
  clockWaiterCount.fetch_sub(1);
  return taken;
}

}  // namespace

bool waitOnWord(WaitWord& word, Milliseconds timeout, Milliseconds recheck,
                const std::function<bool()>& take) {
  if (take()) return true;
  if (timeout == 0) return false;
  if (clockIsReplaced()) return waitByClock(timeout, take);

  const std::uint64_t deadline = clock().monotonicMilliseconds() + timeout;
  while (true) {
    const std::uint32_t seen = word.load();
    if (take()) return true;
    Milliseconds limit = recheck;
    if (timeout != kInfinite) {
      const std::uint64_t now = clock().monotonicMilliseconds();
      if (now >= deadline) return false;
      limit = static_cast<Milliseconds>(std::min<std::uint64_t>(limit, deadline - now));
    }
    waitForChange(word, seen, limit);
  }
}

void wakeWaiters(WaitWord& word) {
  syscall(SYS_futex, &word, FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0);
  if (clockWaiterCount.load() == 0) return;
  ClockWaiters& waiters = clockWaiters();
  // Taking the lock makes sure that a waiter that has just looked is waiting by now.
  { const std::lock_guard guard(waiters.mutex); }
  waiters.changed.notify_all();
}

}  // namespace qvn::platform
