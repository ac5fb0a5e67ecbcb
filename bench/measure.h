// How the pairs are measured: in turn, A B A B ..., so that both meet the same weather of a shared machine.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <vector>

namespace qvn::bench {

using Seconds = double;

// Runs something once and gives the time that counts.
using Measured = std::function<Seconds()>;

double median(std::vector<double> values);

// The median over `rounds` of (time of a) / (time of b), each round running first one, then the other.
double medianRatio(int rounds, const Measured& a, const Measured& b);

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

// The most memory that the process has had in use, in KiB.
double peakMemory();

// The main function of a program of measurements that takes the file of results as its only argument.
int benchMain(int argc, char** argv, void (*run)(const char* file));

// Throws std::runtime_error with the operation's name when the result is not 0: what failed must not count as
// fast.
void require(std::uint32_t result, const char* operation);

}  // namespace qvn::bench
