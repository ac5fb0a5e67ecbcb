// Reading what the exported functions put into a caller's buffer.
#pragma once

#include <cstdint>
#include <vector>

#include "qvn/result_codes.h"

namespace qvn::cli {

// Calls a reader that follows the output buffer rule (buffer, size, required size) with a buffer that is
// large enough. `buffer` is empty unless the answer is 0.
template <typename Character, typename Read>
std::uint32_t readWhole(const Read& read, std::vector<Character>& buffer) {
  buffer.resize(256);
  for (;;) {
    std::uint32_t required = 0;
    const std::uint32_t result = read(buffer.data(), static_cast<std::uint32_t>(buffer.size()), &required);
    if (result == QRN_ERROR_INSUFFICIENT_BUFFER && required > buffer.size()) {
      buffer.resize(required);
      continue;
    }
    buffer.resize(result == QRN_ERROR_SUCCESS ? required : 0);
    return result;
  }
}

}  // namespace qvn::cli
