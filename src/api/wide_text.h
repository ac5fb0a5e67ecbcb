// 8-bit texts as 16-bit characters.
#pragma once

#include <string>

namespace qvn {

// By the C runtime's multibyte conversion in the process's locale; a text that is not valid there is taken
// byte by byte. A character beyond 16 bits becomes a surrogate pair.
std::u16string toWideText(const std::string& text);

}  // namespace qvn
