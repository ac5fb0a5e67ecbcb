// The marker that the print data of a Cpd job ends with.
#pragma once

#include <array>
#include <cstdint>

#include "qvn/transport/data.h"

namespace qvn {

inline constexpr std::array<std::uint8_t, 8> kEndOfJobMarker = {0x1B, 0x2A, 0x82, 0x00,
                                                                0x00, 0x00, 0x00, 0xAC};

bool endsWithEndOfJobMarker(const Data& data);

}  // namespace qvn
