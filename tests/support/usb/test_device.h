// What the suite's devices are on the bus.
#pragma once

#include <cstdint>

namespace qvn::test {

constexpr std::uint16_t kVendor = 0x1209;
constexpr std::uint16_t kProduct = 0x0001;
constexpr std::uint8_t kOut = 0x01;
constexpr std::uint8_t kIn = 0x81;

}  // namespace qvn::test
