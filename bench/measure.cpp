#include "measure.h"

#include <time.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>
#include <utility>

namespace qvn::bench {

namespace {

constexpr std::size_t kLeastRounds = 11;
constexpr std::size_t kMostRounds = 2001;
constexpr std::size_t kLeastSlowRounds = 3;
constexpr Seconds kPatience = 15;

// The values of one row over the rounds so far.
using Values = std::vector<double>;

void add(std::vector<Values>& rows, const std::vector<double>& ratios) {
  rows.resize(ratios.size());
  for (std::size_t i = 0; i < ratios.size(); ++i) rows[i].push_back(ratios[i]);
}

}  // namespace

Turns::Turns(std::vector<Measured> sides) : sides_(std::move(sides)) {
  for (const Measured& side : sides_) side();
}

std::vector<double> Turns::measure(int rounds) {
  std::vector<Values> rows;
  for (int i = 0; i < rounds; ++i) add(rows, round());
  std::vector<double> medians;
  for (const Values& row : rows) medians.push_back(Ratio(row).median);
  return medians;
}

std::vector<double> Turns::round() {
  isForward_ = !isForward_;
  std::vector<Seconds> times(sides_.size());
  for (std::size_t turn = 0; turn < sides_.size(); ++turn) {
    const std::size_t side = isForward_ ? turn : sides_.size() - 1 - turn;
    times[side] = sides_[side]();
  }
  std::vector<double> ratios;
  for (std::size_t other = 1; other < times.size(); ++other) ratios.push_back(times[0] / times[other]);
  return ratios;
}

std::vector<Ratio> untilStable(const std::function<std::vector<double>()>& round) {
  std::vector<Values> rows;
  Seconds taken = 0;
  for (std::size_t rounds = 1;; ++rounds) {
    taken += timeOf([&] { add(rows, round()); });
    std::vector<Ratio> ratios;
    for (const Values& row : rows) ratios.emplace_back(row);
    const bool isStable =
        std::all_of(ratios.begin(), ratios.end(), [](const Ratio& ratio) { return ratio.isStable(); });
    if ((isStable && rounds >= kLeastRounds) || rounds == kMostRounds ||
        (taken > kPatience && rounds >= kLeastSlowRounds)) {
      return ratios;
    }
  }
}

Ratio medianRatio(const Measured& a, const Measured& b) {
  Turns turns({a, b});
  return untilStable([&] { return turns.measure(1); }).front();
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

void forgetPeakMemory() {
  std::ofstream references("/proc/self/clear_refs");
  if (!(references << 5 << std::flush)) throw std::runtime_error("/proc/self/clear_refs cannot be written");
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
