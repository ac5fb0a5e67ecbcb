// The table of ratios: what was measured, against which bound, and what a user has of it.
#pragma once

#include <string>
#include <vector>

#include "ratio.h"

namespace qvn::bench {

class RatioTable {
 public:
  // A measured ratio that is to be at least, or at most, the bound; `gain` says in a line what it means to
  // who uses the library.
  void atLeast(const std::string& name, const std::string& gain, double bound, const Ratio& ratio);
  void atMost(const std::string& name, const std::string& gain, double bound, const Ratio& ratio);

  void print() const;
  // Adds the rows to the list "rows" of the file's object: objects with "name", "gain", "at_least" or
  // "at_most", "ratio", "rounds", "half_width" (of the ratio's interval, in parts of the ratio) and "stable".
  // A file that is not there is made. Throws std::exception when that fails.
  void appendTo(const std::string& file) const;

 private:
  enum class Bound { AtLeast, AtMost };
  struct Row {
    std::string name;
    std::string gain;
    Bound kind;
    double bound;
    Ratio ratio;

    bool isMet() const { return kind == Bound::AtLeast ? ratio.median >= bound : ratio.median <= bound; }
  };

  void add(Row row);

  std::vector<Row> rows_;
};

}  // namespace qvn::bench
