#include "bidi/element/string_to_i.h"

#include <cstdlib>
#include <string>

#include "bidi/element/element_failure.h"

namespace qvn {

std::int32_t StringToi(std::string_view text) {
  std::string_view digits = text;
  int base = 0;
  if (text.starts_with("#")) {
    base = 16;
    digits.remove_prefix(1);
  } else if (text.starts_with("0")) {
    digits.remove_prefix(1);
  }
  const std::string number(digits);
  char* end = nullptr;
  const long long value = std::strtoll(number.c_str(), &end, base);
  // Nothing at all is 0, as it is after the "0" that was dropped.
  if (end != number.c_str() + number.size()) {
    failElement("StringToi: illegal format: " + std::string(text));
  }
  return static_cast<std::int32_t>(value);
}

}  // namespace qvn
