// Numbers of four bytes, the highest first, as the object store's channel has them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace qvn::shared {

inline constexpr std::size_t kNumberLength = 4;

inline std::uint32_t readBigEndian(std::span<const std::uint8_t, kNumberLength> bytes) {
  std::uint32_t number = 0;
  for (const std::uint8_t byte : bytes) number = number << 8 | byte;
  return number;
}

}  // namespace qvn::shared
