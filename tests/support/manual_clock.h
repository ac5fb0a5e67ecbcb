// A clock that moves only when a test says so, or that skips over every wait.
//
// It is in force from its construction to its destruction, which puts back the clock it replaced. Construct
// it before the first thread that waits and let it outlive them all.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <list>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/base/clock.h"

namespace qvn::test {

class ManualClock final : public platform::Clock {
 public:
  enum class Mode {
    // Time stands still: sleeps and timed waits end when advance() reaches their end, or when what they wait
    // for happens.
    Explicit,
    // A sleep moves the time forward by its duration and returns. A timed wait blocks for as long as another
    // thread of the process computes, and for a moment of real time beyond, so that its condition may come to
    // hold; then it moves the time to the end of the wait that ends first.
    AutoAdvance,
  };

  // `patience` is that moment. Make it longer when a wait may be for another process.
  explicit ManualClock(Mode mode = Mode::Explicit,
                       std::chrono::milliseconds patience = std::chrono::milliseconds(3));
  ~ManualClock() override;
  ManualClock(const ManualClock&) = delete;
  ManualClock& operator=(const ManualClock&) = delete;

  std::uint64_t monotonicMilliseconds() override;
  std::chrono::system_clock::time_point now() override;
  void sleep(platform::Milliseconds duration) override;
  bool wait(std::unique_lock<std::mutex>& lock, std::condition_variable& condition,
            platform::Milliseconds timeout, const std::function<bool()>& ready) override;

  // Moves the time forward and wakes whoever waited for it.
  void advance(platform::Milliseconds duration);

  // Moves the time to the earliest end of a sleep or timed wait; false when there is none.
  bool advanceToNext();

  // Blocks until `count` threads sleep or wait (threads whose time has come no longer count); false when that
  // has not happened within ten real seconds.
  [[nodiscard]] bool waitForWaiters(std::size_t count);

  // Blocks until a thread waits for what it waits for no longer than so long from now; false when that has
  // not happened within ten real seconds.
  [[nodiscard]] bool waitForWait(platform::Milliseconds duration);

  // Sets the time of day; it moves on with the clock.
  void setNow(std::chrono::system_clock::time_point moment);

  // The durations of all sleeps so far, in the order they began, and their sum. Sleeps of 0 are not among
  // them.
  std::vector<platform::Milliseconds> sleeps() const;
  std::uint64_t totalSlept() const;

 private:
  using Time = std::uint64_t;

  struct Waiter {
    std::optional<Time> deadline;  // none: waits without limit
    std::condition_variable* condition;
    bool due = false;
  };
  using Waiters = std::list<Waiter>;

  Waiters::iterator enter(std::optional<Time> deadline, std::condition_variable* condition);
  void leave(Waiters::iterator waiter);
  std::optional<Time> earliestDeadline() const;
  void moveTo(Time time);

  const Mode mode_;
  const std::chrono::milliseconds patience_;
  platform::Clock* const previous_;

  mutable std::mutex mutex_;
  std::condition_variable sleepersChanged_;
  std::condition_variable waitersChanged_;
  Time time_ = 0;
  std::chrono::system_clock::time_point epoch_;
  Waiters waiters_;
  std::vector<platform::Milliseconds> sleeps_;
};

// For fixtures, before the library: its threads use the clock until they end.
struct SkippingClock {
  ManualClock clock{ManualClock::Mode::AutoAdvance};
};
struct StandingClock {
  ManualClock clock;
};

}  // namespace qvn::test
