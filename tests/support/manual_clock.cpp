#include "support/manual_clock.h"

#include <algorithm>
#include <numeric>
#include <thread>

#include "support/other_threads.h"

namespace qvn::test {
namespace {

using platform::Milliseconds;

// A skipped wait is put off at most so often because other threads compute.
constexpr int kMaxBusySlices = 100;

constexpr auto kRealPatience = std::chrono::seconds(10);

}  // namespace

ManualClock::ManualClock(Mode mode, std::chrono::milliseconds patience)
    : mode_(mode),
      patience_(patience),
      previous_(platform::replaceClock(this)),
      epoch_(std::chrono::sys_days(std::chrono::year_month_day(std::chrono::year(2020), std::chrono::month(5),
                                                               std::chrono::day(17)))) {}

ManualClock::~ManualClock() { platform::replaceClock(previous_ == this ? nullptr : previous_); }

std::uint64_t ManualClock::monotonicMilliseconds() {
  const std::lock_guard guard(mutex_);
  return time_;
}

std::chrono::system_clock::time_point ManualClock::now() {
  const std::lock_guard guard(mutex_);
  return epoch_ + std::chrono::milliseconds(time_);
}

void ManualClock::setNow(std::chrono::system_clock::time_point moment) {
  const std::lock_guard guard(mutex_);
  epoch_ = moment - std::chrono::milliseconds(time_);
}

void ManualClock::sleep(Milliseconds duration) {
  if (duration == 0) {
    std::this_thread::yield();
    return;
  }
  std::unique_lock lock(mutex_);
  sleeps_.push_back(duration);
  const bool limited = duration != platform::kInfinite;
  const Time deadline = time_ + duration;
  if (mode_ == Mode::AutoAdvance && limited) {
    moveTo(deadline);
    lock.unlock();
    std::this_thread::yield();
    return;
  }
  const auto self = enter(limited ? std::optional(deadline) : std::nullopt, nullptr);
  sleepersChanged_.wait(lock, [&] { return limited && time_ >= deadline; });
  leave(self);
}

bool ManualClock::wait(std::unique_lock<std::mutex>& lock, std::condition_variable& condition,
                       Milliseconds timeout, const std::function<bool()>& ready) {
  if (ready()) return true;
  if (timeout == 0) return false;

  // Lock order: the waiter's lock, then mutex_. Whoever moves the time holds mutex_ alone.
  std::optional<Time> deadline;
  Waiters::iterator self;
  {
    const std::lock_guard guard(mutex_);
    if (timeout != platform::kInfinite) deadline = time_ + timeout;
    self = enter(deadline, &condition);
  }
  bool result = false;
  int busySlices = 0;
  Time seen = monotonicMilliseconds();
  while (true) {
    // Whether notified or not, it looks again after a while: the time is moved without the waiter's lock, so
    // a notification may come before the waiter blocks.
    const bool notified = condition.wait_for(lock, patience_) == std::cv_status::no_timeout;
    result = ready();
    if (result) break;

    const bool busy = mode_ == Mode::AutoAdvance && !notified && othersCompute();
    const std::lock_guard guard(mutex_);
    if (deadline && time_ >= *deadline) break;
    if (mode_ != Mode::AutoAdvance || !deadline || notified) continue;
    if (time_ != seen) {  // Another thread moves the time: what it does next may be what this one waits for.
      seen = time_;
      continue;
    }
    if (busy && ++busySlices < kMaxBusySlices) continue;
    busySlices = 0;
    moveTo(*earliestDeadline());
    seen = time_;
    if (time_ >= *deadline) break;
  }
  {
    const std::lock_guard guard(mutex_);
    leave(self);
  }
  // The time may have come together with the event: the event counts.
  return result || ready();
}

void ManualClock::advance(Milliseconds duration) {
  const std::lock_guard guard(mutex_);
  moveTo(time_ + duration);
}

bool ManualClock::advanceToNext() {
  const std::lock_guard guard(mutex_);
  const auto next = earliestDeadline();
  if (next) moveTo(*next);
  return next.has_value();
}

bool ManualClock::waitForWaiters(std::size_t count) {
  std::unique_lock lock(mutex_);
  return waitersChanged_.wait_for(lock, kRealPatience, [&] {
    const auto waiting =
        std::count_if(waiters_.begin(), waiters_.end(), [](const Waiter& w) { return !w.due; });
    return static_cast<std::size_t>(waiting) >= count;
  });
}

bool ManualClock::waitForWait(Milliseconds duration) {
  std::unique_lock lock(mutex_);
  return waitersChanged_.wait_for(lock, kRealPatience, [&] {
    return std::any_of(waiters_.begin(), waiters_.end(),
                       [&](const Waiter& w) { return !w.due && w.deadline == time_ + duration; });
  });
}

std::vector<Milliseconds> ManualClock::sleeps() const {
  const std::lock_guard guard(mutex_);
  return sleeps_;
}

std::uint64_t ManualClock::totalSlept() const {
  const std::lock_guard guard(mutex_);
  return std::accumulate(sleeps_.begin(), sleeps_.end(), std::uint64_t{0});
}

ManualClock::Waiters::iterator ManualClock::enter(std::optional<Time> deadline,
                                                  std::condition_variable* condition) {
  waiters_.push_back(Waiter{deadline, condition});
  waitersChanged_.notify_all();
  return std::prev(waiters_.end());
}

void ManualClock::leave(Waiters::iterator waiter) { waiters_.erase(waiter); }

std::optional<ManualClock::Time> ManualClock::earliestDeadline() const {
  std::optional<Time> earliest;
  for (const Waiter& waiter : waiters_) {
    if (!waiter.deadline || waiter.due) continue;
    if (!earliest || *waiter.deadline < *earliest) earliest = waiter.deadline;
  }
  return earliest;
}

void ManualClock::moveTo(Time time) {
  time_ = std::max(time_, time);
  for (Waiter& waiter : waiters_) {
    if (!waiter.deadline || *waiter.deadline > time_) continue;
    waiter.due = true;
    // A waiter takes mutex_ to leave the list, so its condition is alive here.
    if (waiter.condition != nullptr) waiter.condition->notify_all();
  }
  sleepersChanged_.notify_all();
}

}  // namespace qvn::test
