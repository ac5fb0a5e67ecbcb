// StringToi: the number that a text of an element stands for.
#pragma once

#include <cstdint>
#include <string_view>

namespace qvn {

// "#" and hexadecimal digits; or a C integer literal, of which one "0" in front is dropped ("012" is 12,
// "0x1F" does not count). Cut to 32 bits. Anything else is a Win32Exception "StringToi: illegal format: " and
// the text.
std::int32_t StringToi(std::string_view text);

}  // namespace qvn
