#include "bidi/object_store/request_id.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "support/manual_clock.h"

namespace qvn::test {
namespace {

TEST(RequestIds, BeginAtAMultipleOf1000OfTheClock) {
  ManualClock clock(ManualClock::Mode::AutoAdvance);
  const std::pair<platform::Milliseconds, std::uint32_t> cases[] = {
      {500, 1000},     // stands at a first id of 0, and is asked again a millisecond later
      {2, 3000},       // 503
      {496, 499'000},  // 999
  };
  for (const auto& [elapsed, first] : cases) {
    clock.advance(elapsed);
    RequestIds ids;
    EXPECT_EQ(ids.next(), first);
    EXPECT_EQ(ids.next(), first + 1);
  }
}

TEST(RequestIds, AreNeverTheSameForTwoThreads) {
  constexpr std::size_t kThreads = 4;
  constexpr std::size_t kIds = 2000;
  const std::uint32_t before = nextRequestId();
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < kThreads; ++i) {
    threads.emplace_back([] {
      for (std::size_t id = 0; id < kIds; ++id) nextRequestId();
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(nextRequestId(), before + kThreads * kIds + 1);
}

}  // namespace
}  // namespace qvn::test
