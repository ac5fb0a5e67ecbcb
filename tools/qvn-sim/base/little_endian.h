// Little-endian numbers, as ESC commands, the HID port and USB have them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/bytes.h"

namespace sim {

// 0 when the bytes are too short.
inline std::uint16_t readLittle16(ByteView bytes, std::size_t offset) {
  if (offset + 2 > bytes.size()) return 0;
  return static_cast<std::uint16_t>(bytes[offset] | bytes[offset + 1] << 8);
}

inline void writeLittle16(std::uint8_t* to, std::size_t value) {
  to[0] = static_cast<std::uint8_t>(value & 0xFF);
  to[1] = static_cast<std::uint8_t>(value >> 8 & 0xFF);
}

inline void appendLittle32(Bytes& bytes, std::uint32_t value) {
  for (int shift = 0; shift < 32; shift += 8)
    bytes.push_back(static_cast<std::uint8_t>(value >> shift & 0xFF));
}

}  // namespace sim
