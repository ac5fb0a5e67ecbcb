// The table of ratios: what was measured, against which bound.
#pragma once

#include <string>
#include <vector>

namespace qvn::bench {

class RatioTable {
 public:
  // A measured ratio that is to be at least, or at most, the bound.
  void atLeast(const std::string& name, double ratio, double bound);
  void atMost(const std::string& name, double ratio, double bound);

  void print() const;
  // Adds the rows to the file's list of objects with "name", "ratio" and "at_least" or "at_most"; a file that
  // is not there is made. Throws std::exception when that fails.
  void appendTo(const std::string& file) const;

 private:
  enum class Bound { AtLeast, AtMost };
  struct Row {
    std::string name;
    double ratio;
    Bound kind;
    double bound;

    bool isMet() const { return kind == Bound::AtLeast ? ratio >= bound : ratio <= bound; }
  };

  void add(Row row);

  std::vector<Row> rows_;
};

}  // namespace qvn::bench
