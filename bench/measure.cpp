#include "measure.h"

#include <time.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>

namespace qvn::bench {

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

double medianRatio(int rounds, const Measured& a, const Measured& b) {
  // Both once before it counts: files are opened, memory is faulted in.
  a();
  b();
  std::vector<double> ratios;
  for (int round = 0; round < rounds; ++round) {
    const Seconds first = a();
    ratios.push_back(first / b());
  }
  return median(ratios);
}

std::uint64_t nanosecondsNow() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::uint64_t>(now.tv_sec) * 1000000000 + static_cast<std::uint64_t>(now.tv_nsec);
}

double peakMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    double size = 0;
    if (word == "VmHWM:" && status >> size) return size;
  }
  throw std::runtime_error("/proc/self/status does not tell the peak memory");
}

void require(std::uint32_t result, const char* operation) {
  if (result != 0) throw std::runtime_error(std::string(operation) + " gave " + std::to_string(result));
}

int benchMain(int argc, char** argv, void (*run)(const char* file)) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s FILE\n", argv[0]);
    return 2;
  }
  try {
    run(argv[1]);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
    return 1;
  }
}

}  // namespace qvn::bench
