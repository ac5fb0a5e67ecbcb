// Bytes that somebody else keeps.
#pragma once

#include <cstdint>
#include <span>

namespace qvn::scan {

using Bytes = std::span<const std::uint8_t>;

}  // namespace qvn::scan
