#include "ratio_table.h"

#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

namespace qvn::bench {

void RatioTable::atLeast(const std::string& name, double ratio, double bound) {
  add({name, ratio, Bound::AtLeast, bound});
}

void RatioTable::atMost(const std::string& name, double ratio, double bound) {
  add({name, ratio, Bound::AtMost, bound});
}

void RatioTable::add(Row row) {
  std::fprintf(stderr, "measured: %s\n", row.name.c_str());
  rows_.push_back(std::move(row));
}

void RatioTable::print() const {
  // Wide enough for every name, so that the tables of two programs line up.
  constexpr int kWidth = 76;
  for (const Row& row : rows_) {
    std::printf("%-*s %8.3f  %s %-5g%s\n", kWidth, row.name.c_str(), row.ratio,
                row.kind == Bound::AtLeast ? "at least" : "at most ", row.bound,
                row.isMet() ? "" : "  missed");
  }
}

void RatioTable::appendTo(const std::string& file) const {
  nlohmann::ordered_json rows = nlohmann::ordered_json::array();
  if (std::ifstream before(file); before) before >> rows;
  for (const Row& row : rows_) {
    rows.push_back({{"name", row.name},
                    {"ratio", row.ratio},
                    {row.kind == Bound::AtLeast ? "at_least" : "at_most", row.bound}});
  }
  std::ofstream out(file, std::ios::trunc);
  out << rows.dump(2) << '\n';
  out.close();
  if (out.fail()) throw std::runtime_error("cannot write " + file);
}

}  // namespace qvn::bench
