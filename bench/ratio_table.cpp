#include "ratio_table.h"

#include <cmath>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

namespace qvn::bench {
namespace {

// As many digits as a measurement has at best.
double rounded(double value) { return std::round(value * 1000) / 1000; }

}  // namespace

void RatioTable::atLeast(const std::string& name, const std::string& gain, double bound, const Ratio& ratio) {
  add({name, gain, Bound::AtLeast, bound, ratio});
}

void RatioTable::atMost(const std::string& name, const std::string& gain, double bound, const Ratio& ratio) {
  add({name, gain, Bound::AtMost, bound, ratio});
}

void RatioTable::add(Row row) {
  std::fprintf(stderr, "measured: %s (%zu rounds)\n", row.name.c_str(), row.ratio.rounds);
  rows_.push_back(std::move(row));
}

void RatioTable::print() const {
  // Wide enough for every name, so that the tables of two programs line up.
  constexpr int kWidth = 80;
  for (const Row& row : rows_) {
    std::printf("%-*s %8.3f  %s %-5g%s", kWidth, row.name.c_str(), row.ratio.median,
                row.kind == Bound::AtLeast ? "at least" : "at most ", row.bound,
                row.isMet() ? "" : "  missed");
    if (!row.ratio.isStable()) std::printf("  too noisy (±%.0f %%)", row.ratio.halfWidth * 100);
    std::putchar('\n');
  }
}

void RatioTable::appendTo(const std::string& file) const {
  nlohmann::ordered_json results;
  if (std::ifstream before(file); before) before >> results;
  for (const Row& row : rows_) {
    results["rows"].push_back({{"name", row.name},
                               {"gain", row.gain},
                               {row.kind == Bound::AtLeast ? "at_least" : "at_most", row.bound},
                               {"ratio", rounded(row.ratio.median)},
                               {"rounds", row.ratio.rounds},
                               {"half_width", rounded(row.ratio.halfWidth)},
                               {"stable", row.ratio.isStable()}});
  }
  std::ofstream out(file, std::ios::trunc);
  out << results.dump(2) << '\n';
  out.close();
  if (out.fail()) throw std::runtime_error("cannot write " + file);
}

}  // namespace qvn::bench
