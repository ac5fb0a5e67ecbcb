// ByteReader: the bytes of a packet, read by offset without ever running past the end.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "qvn/transport/data.h"

namespace qvn {

class ByteReader {
 public:
  ByteReader(const std::uint8_t* bytes, std::size_t length) : bytes_(bytes, length) {}
  explicit ByteReader(const Data& data) : ByteReader(data.getBuffer(), data.getLength()) {}

  std::size_t length() const { return bytes_.size(); }

  // Nothing when the bytes end before.
  std::optional<std::uint8_t> u8(std::size_t offset) const {
    if (offset >= bytes_.size()) return std::nullopt;
    return bytes_[offset];
  }
  // Two bytes, the high one first.
  std::optional<std::uint16_t> u16(std::size_t offset) const {
    if (offset >= bytes_.size() || bytes_.size() - offset < 2) return std::nullopt;
    return static_cast<std::uint16_t>(bytes_[offset] << 8 | bytes_[offset + 1]);
  }
  // `count` bytes; empty when there are fewer.
  std::span<const std::uint8_t> bytes(std::size_t offset, std::size_t count) const {
    if (offset > bytes_.size() || bytes_.size() - offset < count) return {};
    return bytes_.subspan(offset, count);
  }
  // True when the bytes at the offset are these.
  template <std::size_t Size>
  bool has(std::size_t offset, const std::uint8_t (&expected)[Size]) const {
    const auto found = bytes(offset, Size);
    return found.size() == Size && std::equal(found.begin(), found.end(), expected);
  }

 private:
  std::span<const std::uint8_t> bytes_;
};

}  // namespace qvn
