#include "ratio.h"

#include <algorithm>
#include <cmath>

namespace qvn::bench {
namespace {

constexpr double kStable = 0.05;
// Half of the normal distribution's 1.96, as the rounds below the median are binomial with a deviation of
// half the root of their number.
constexpr double kHalfDeviations = 0.98;

double medianOfSorted(const std::vector<double>& values) {
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

}  // namespace

Ratio::Ratio(std::vector<double> values) : rounds(values.size()) {
  std::sort(values.begin(), values.end());
  median = medianOfSorted(values);
  const auto count = static_cast<double>(rounds);
  // The interval's lower end is the nth of the rounds, its upper end the nth from the other side.
  const double rank = std::floor((count + 1) / 2 - kHalfDeviations * std::sqrt(count));
  const std::size_t outside = rank > 1 ? static_cast<std::size_t>(rank) - 1 : 0;
  halfWidth = std::max(median - values[outside], values[rounds - 1 - outside] - median) / median;
}

bool Ratio::isStable() const { return halfWidth <= kStable; }

}  // namespace qvn::bench
