// DoubleElem: a floating-point number.
#pragma once

#include "bidi/element/data_elem.h"

namespace qvn {

class DoubleElem : public DataElem {
 public:
  explicit DoubleElem(double value) : value_(value) {}

  // Six decimals of the value rounded to single precision.
  std::string stringValue() const override;
  // Cut toward zero; a number beyond the 32 bits gives the nearest one within, no number 0.
  std::int32_t intValue() const override;
  bool booleanValue() const override;
  std::string describe() const override;
  std::unique_ptr<Element> clone() const override;
  void accept(ElementVisitor& visitor) const override;
  bool isInstanceOf(std::string_view className) const override;

  // The whole value; stringValue rounds it.
  double value() const { return value_; }

  // A number with six decimals, whatever the process's locale.
  static std::string fixedText(double value);

 private:
  double value_;
};

}  // namespace qvn
