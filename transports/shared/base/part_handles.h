// The part of a device that does not print is a device of its own. Handles are unique per kind only, and the
// library finds a scanner's printer by the difference.
#pragma once

#include <cstdint>

namespace qvn::shared {

inline constexpr std::uint32_t kScannerHandleOffset = 400;
inline constexpr std::uint32_t kHidHandleOffset = 800;

}  // namespace qvn::shared
