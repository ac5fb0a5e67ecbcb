// The rule by which exported functions fill a caller's buffer.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "qvn/result_codes.h"

namespace qvn {

// Copies the bytes when they fit. `required` becomes their number either way; 122 when the buffer is smaller.
inline std::uint32_t copyOut(const void* bytes, std::size_t length, void* buffer, std::uint32_t size,
                             std::uint32_t& required) {
  required = static_cast<std::uint32_t>(length);
  if (length > size) return QRN_ERROR_INSUFFICIENT_BUFFER;
  if (length != 0) std::memcpy(buffer, bytes, length);
  return QRN_ERROR_SUCCESS;
}

// The same for a text and its terminator.
inline std::uint32_t copyOutText(std::string_view text, char* buffer, std::uint32_t size,
                                 std::uint32_t& required) {
  required = static_cast<std::uint32_t>(text.size() + 1);
  if (text.size() >= size) return QRN_ERROR_INSUFFICIENT_BUFFER;
  *std::copy(text.begin(), text.end(), buffer) = '\0';
  return QRN_ERROR_SUCCESS;
}

}  // namespace qvn
