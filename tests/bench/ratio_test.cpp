// When a measured ratio counts as stable.
#include "ratio.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace qvn::bench {
namespace {

TEST(MeasuredRatio, IsStableWhileTheIntervalOfItsMedianStaysWithinFivePercent) {
  const struct {
    const char* what;
    std::vector<double> rounds;
    double median;
    double halfWidth;
    bool isStable;
  } cases[] = {
      {"a single round", {2}, 2, 0, true},
      {"few rounds: all count", {1, 1, 1, 1.06}, 1, 0.06, false},
      {"six rounds: all count", {0.96, 1, 1, 1, 1, 1.04}, 1, 0.04, true},
      {"eleven rounds: one at each end does not", {0.1, 1.96, 2, 2, 2, 2, 2, 2, 2, 2.02, 9}, 2, 0.02, true},
      {"eleven rounds: two at one end do", {2, 2, 2, 2, 2, 2, 2, 2, 2, 3, 9}, 2, 0.5, false},
      {"twenty rounds: five at each end do not",
       {1, 1, 1, 1, 1, 3, 4, 4, 4, 4, 4, 4, 4, 4, 4, 9, 9, 9, 9, 9},
       4,
       0.25,
       false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const Ratio ratio(c.rounds);
    EXPECT_DOUBLE_EQ(ratio.median, c.median);
    EXPECT_NEAR(ratio.halfWidth, c.halfWidth, 1e-9);
    EXPECT_EQ(ratio.isStable(), c.isStable);
  }
  EXPECT_TRUE(Ratio(0.0).isStable()) << "what is counted";
}

}  // namespace
}  // namespace qvn::bench
