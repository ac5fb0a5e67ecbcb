// How the pairs are measured: in turn, A B, B A, A B ..., so that both meet the same weather of a shared
// machine, and as often as it takes until the median can be trusted.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <vector>

#include "ratio.h"

namespace qvn::bench {

using Seconds = double;

// Runs something once and gives the time that counts.
using Measured = std::function<Seconds()>;

// Two or more sides that are measured in turn.
class Turns {
 public:
  // Runs each once before it counts: files are opened, memory is faulted in.
  explicit Turns(std::vector<Measured> sides);

  // (time of the first side) / (time of each other one): the medians over so many rounds.
  std::vector<double> measure(int rounds);

 private:
  std::vector<double> round();

  std::vector<Measured> sides_;
  bool isForward_ = false;
};

// Repeats a round, which gives a ratio for each of the rows that are measured together, until all of them are
// stable; at least 11 times and at most 2001 times. After 15 s it ends with what there is, three rounds at
// least.
std::vector<Ratio> untilStable(const std::function<std::vector<double>()>& round);

// (time of a) / (time of b) in rounds of both, until it is stable.
Ratio medianRatio(const Measured& a, const Measured& b);

template <typename Action>
Seconds timeOf(Action&& action) {
  const auto begin = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

// The time of that many runs of the action.
template <typename Action>
Seconds timeOf(std::uint32_t runs, Action&& action) {
  return timeOf([&] {
    for (std::uint32_t run = 0; run < runs; ++run) action();
  });
}

// The time in nanoseconds, of the clock that all processes share and that never goes back.
std::uint64_t nanosecondsNow();

// The most memory that the process has had in use, in KiB, since it began or last forgot.
double peakMemory();
void forgetPeakMemory();

// The main function of a program of measurements that takes the file of results as its only argument.
int benchMain(int argc, char** argv, void (*run)(const char* file));

// Throws std::runtime_error with the operation's name when the result is not 0: what failed must not count as
// fast.
void require(std::uint32_t result, const char* operation);

}  // namespace qvn::bench
