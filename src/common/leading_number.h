// The decimal number that a text begins with.
#pragma once

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <limits>
#include <string_view>
#include <system_error>

namespace qvn {

// Blanks and, for a signed number, a sign may stand before it. 0 when there is none; the nearest number when
// it is out of range.
template <typename Number>
Number leadingNumber(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  const bool negative = text.starts_with('-');
  if (text.starts_with('+') && !text.substr(1).starts_with('-')) text.remove_prefix(1);
  Number number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec != std::errc::result_out_of_range) return number;
  return negative ? std::numeric_limits<Number>::min() : std::numeric_limits<Number>::max();
}

}  // namespace qvn
