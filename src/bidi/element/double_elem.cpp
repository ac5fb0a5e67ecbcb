#include "bidi/element/double_elem.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "bidi/element/element_visitor.h"

namespace qvn {

std::string DoubleElem::fixedText(double value) {
  std::array<char, std::numeric_limits<double>::max_exponent10 + 16> digits;
  const auto written =
      std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed, 6);
  return std::string(digits.data(), written.ptr);
}

std::string DoubleElem::stringValue() const { return fixedText(static_cast<float>(value_)); }

std::int32_t DoubleElem::intValue() const {
  using Limits = std::numeric_limits<std::int32_t>;
  if (std::isnan(value_)) return 0;
  return static_cast<std::int32_t>(std::clamp<double>(value_, Limits::min(), Limits::max()));
}

bool DoubleElem::booleanValue() const { return value_ != 0.0; }

std::string DoubleElem::describe() const { return ": " + stringValue(); }

std::unique_ptr<Element> DoubleElem::clone() const { return std::make_unique<DoubleElem>(value_); }

void DoubleElem::accept(ElementVisitor& visitor) const { visitor.visitDoubleElem(*this); }

bool DoubleElem::isInstanceOf(std::string_view className) const {
  return className == "DoubleElem" || DataElem::isInstanceOf(className);
}

}  // namespace qvn
