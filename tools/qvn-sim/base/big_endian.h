// Big-endian numbers and bytes, read one after the other from bytes that may end too early.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/bytes.h"

namespace sim {

class BigEndianReader {
 public:
  explicit BigEndianReader(ByteView bytes) : rest_(bytes) {}

  std::uint16_t u16() { return static_cast<std::uint16_t>(number(2)); }
  std::uint32_t u32() { return number(4); }
  // Empty when there are fewer.
  ByteView bytes(std::size_t count) {
    if (count > rest_.size()) {
      isGood_ = false;
      rest_ = {};
      return {};
    }
    const ByteView taken = rest_.first(count);
    rest_ = rest_.subspan(count);
    return taken;
  }
  ByteView rest() const { return rest_; }

  // Whether everything asked for was there; what was not is 0.
  bool isGood() const { return isGood_; }

 private:
  std::uint32_t number(std::size_t length) {
    std::uint32_t value = 0;
    for (const std::uint8_t byte : bytes(length)) value = value << 8 | byte;
    return value;
  }

  ByteView rest_;
  bool isGood_ = true;
};

inline void appendBig16(Bytes& bytes, std::uint32_t value) {
  bytes.push_back(static_cast<std::uint8_t>(value >> 8 & 0xFF));
  bytes.push_back(static_cast<std::uint8_t>(value & 0xFF));
}

inline void appendBig32(Bytes& bytes, std::uint32_t value) {
  appendBig16(bytes, value >> 16);
  appendBig16(bytes, value & 0xFFFF);
}

}  // namespace sim
