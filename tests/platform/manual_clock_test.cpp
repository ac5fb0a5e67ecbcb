// The clock that other tests depend on.
#include "support/manual_clock.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

namespace qvn::test {
namespace {

using platform::clock;
using testing::ElementsAre;
using Mode = ManualClock::Mode;

// Something to wait for.
struct Flag {
  std::mutex mutex;
  std::condition_variable changed;
  bool set = false;

  bool wait(platform::Milliseconds timeout) {
    std::unique_lock lock(mutex);
    return clock().wait(lock, changed, timeout, [this] { return set; });
  }
  void raise() {
    const std::lock_guard guard(mutex);
    set = true;
    changed.notify_all();
  }
};

TEST(ManualClock, IsInForceWhileItLives) {
  {
    ManualClock manual;
    EXPECT_EQ(&clock(), &manual);
    manual.advance(70'000);
    EXPECT_EQ(clock().monotonicMilliseconds(), 70'000U);
    manual.advance(0xFFFFFFFF);
    EXPECT_EQ(platform::tickCount(), 69'999U) << "wraps";
  }
  EXPECT_GT(clock().monotonicMilliseconds(), 0U);
}

TEST(ManualClock, TheTimeOfDayMovesWithIt) {
  ManualClock manual;
  const auto noon = std::chrono::sys_days(std::chrono::year(2021) / 3 / 4) + std::chrono::hours(12);
  manual.advance(5);
  manual.setNow(noon);
  manual.advance(1500);
  EXPECT_EQ(clock().now(), noon + std::chrono::milliseconds(1500));
}

TEST(ManualClock, ExplicitTimeMovesOnlyWhenTold) {
  ManualClock manual;
  std::atomic<int> woken{0};
  std::thread sleeper([&] {
    platform::sleep(100);
    ++woken;
    platform::sleep(50);
    ++woken;
  });
  ASSERT_TRUE(manual.waitForWaiters(1));
  manual.advance(99);
  EXPECT_EQ(woken, 0);
  manual.advance(1);
  ASSERT_TRUE(manual.waitForWaiters(1));
  EXPECT_EQ(woken, 1);
  EXPECT_TRUE(manual.advanceToNext());
  sleeper.join();
  EXPECT_EQ(manual.monotonicMilliseconds(), 150U);
  EXPECT_FALSE(manual.advanceToNext()) << "nobody sleeps";
  EXPECT_THAT(manual.sleeps(), ElementsAre(100, 50));
  EXPECT_EQ(manual.totalSlept(), 150U);
}

TEST(ManualClock, ExplicitWaitsEndByTheirConditionOrTheirTime) {
  ManualClock manual;
  Flag raised;
  Flag never;
  bool first = false;
  bool second = true;
  std::thread one([&] { first = raised.wait(60'000); });
  std::thread two([&] { second = never.wait(60'000); });
  ASSERT_TRUE(manual.waitForWaiters(2));
  raised.raise();
  one.join();
  EXPECT_TRUE(first);
  manual.advance(60'000);
  two.join();
  EXPECT_FALSE(second);
  EXPECT_FALSE(never.wait(0));
}

TEST(ManualClock, AutomaticTimeSkipsSleeps) {
  ManualClock manual(Mode::AutoAdvance);
  for (int attempt = 0; attempt < 20; ++attempt) platform::sleep(1500);
  EXPECT_EQ(manual.sleeps(), std::vector<platform::Milliseconds>(20, 1500));
  EXPECT_EQ(manual.monotonicMilliseconds(), 30'000U);
}

TEST(ManualClock, AutomaticTimeSkipsWaitsThatNobodyEnds) {
  ManualClock manual(Mode::AutoAdvance);
  Flag never;
  EXPECT_FALSE(never.wait(60'000));
  EXPECT_EQ(manual.monotonicMilliseconds(), 60'000U);
}

TEST(ManualClock, AutomaticTimeLetsOthersWorkFirst) {
  ManualClock manual(Mode::AutoAdvance);
  Flag done;
  std::thread worker([&] {
    // Ten skipped sleeps and some computing, all of it well within the minute that the other one has.
    for (int i = 0; i < 10; ++i) {
      platform::sleep(1000);
      for (int spin = 0; spin < 2'000'000; ++spin) std::atomic_signal_fence(std::memory_order_seq_cst);
    }
    done.raise();
  });
  EXPECT_TRUE(done.wait(60'000));
  EXPECT_LT(manual.monotonicMilliseconds(), 60'000U);
  worker.join();
}

TEST(ManualClock, AutomaticTimeEndsTheShortestWaitFirst) {
  ManualClock manual(Mode::AutoAdvance);
  Flag never;
  Flag answered;
  std::thread answerer([&] {
    never.wait(500);
    answered.raise();
  });
  ASSERT_TRUE(manual.waitForWaiters(1));
  EXPECT_TRUE(answered.wait(60'000));
  EXPECT_LT(manual.monotonicMilliseconds(), 60'000U);
  answerer.join();
}

}  // namespace
}  // namespace qvn::test
