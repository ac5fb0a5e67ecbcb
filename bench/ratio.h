// A measured ratio, and how far it can be trusted.
#pragma once

#include <cstddef>
#include <vector>

namespace qvn::bench {

struct Ratio {
  // Of what is counted, not timed: it is what it is.
  Ratio(double counted) : median(counted) {}
  // The median of what the rounds gave, at least one. Its interval is that of the order
  // statistics: in 95 of 100 measurements the true median lies between these two of the rounds. Fewer than
  // six rounds hold no such interval; then it goes from the least to the greatest.
  explicit Ratio(std::vector<double> values);

  // Whether the interval stays within 5 % of the median.
  bool isStable() const;

  double median = 0;
  std::size_t rounds = 1;
  double halfWidth = 0;  // from the median to the farther end of its interval, in parts of the median
};

}  // namespace qvn::bench
