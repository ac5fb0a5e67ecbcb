// The ESC commands of a scan: a header of 8 bytes, numbers little-endian.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "shared/scan/settings.h"

namespace qvn::scan {

inline constexpr std::size_t kHeaderLength = 8;
// A payload says its length in 16 bits.
inline constexpr std::size_t kLongestCommand = kHeaderLength + 0xFFFF;

using Request = std::vector<std::uint8_t>;

Request versionRequest();
Request lockRequest();
Request unlockRequest();
Request sourceRequest(Source source);
Request resolutionRequest(std::uint32_t dpi);
Request colorFormatRequest(ColorMode mode);
Request clippingRequest(const Area& area);
Request sizeRequest(const Area& area);

}  // namespace qvn::scan
