// The system's own clock.
#include "platform/base/clock.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

namespace qvn::platform {
namespace {

TEST(SystemClock, SleepsAndTimedWaitsLastAsLongAsTheyAreTold) {
  constexpr Milliseconds kDuration = 5;
  std::mutex mutex;
  std::condition_variable never;
  const std::uint64_t start = clock().monotonicMilliseconds();
  sleep(kDuration);
  const std::uint64_t slept = clock().monotonicMilliseconds();
  EXPECT_GE(slept - start, kDuration);
  std::unique_lock lock(mutex);
  EXPECT_FALSE(clock().wait(lock, never, kDuration, [] { return false; }));
  EXPECT_GE(clock().monotonicMilliseconds() - slept, kDuration);
  EXPECT_TRUE(clock().wait(lock, never, kInfinite, [] { return true; }));
}

TEST(SystemClock, LocalTimeIsThatOfTheZone) {
  using std::chrono::milliseconds;
  const auto moment = std::chrono::sys_days(std::chrono::year(2021) / 12 / 31) + std::chrono::hours(23) +
                      std::chrono::minutes(30) + milliseconds(1007);
  const struct {
    const char* zone;
    LocalTime expected;
  } cases[] = {
      {"UTC0", {2021, 12, 31, 23, 30, 1, 7}},
      {"XYZ-1", {2022, 1, 1, 0, 30, 1, 7}},
      {"XYZ+5", {2021, 12, 31, 18, 30, 1, 7}},
  };
  for (const auto& c : cases) {
    setenv("TZ", c.zone, 1);
    tzset();
    const LocalTime local = localTime(moment);
    const auto parts = [](const LocalTime& t) {
      return std::vector<int>{t.year, t.month, t.day, t.hour, t.minute, t.second, t.millisecond};
    };
    EXPECT_EQ(parts(local), parts(c.expected)) << c.zone;
  }
}

}  // namespace
}  // namespace qvn::platform
