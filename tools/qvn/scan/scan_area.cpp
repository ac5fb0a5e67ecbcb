#include "scan/scan_area.h"

#include <charconv>
#include <cmath>

namespace qvn::cli {

namespace {

// A kilometre: more than any scanner sees, and far from what the units can hold.
constexpr double kFarthest = 1e6;

}  // namespace

std::optional<scan::Area> parseArea(std::string_view text) {
  std::uint32_t lengths[4];
  const char* at = text.data();
  const char* const end = text.data() + text.size();
  for (std::size_t i = 0; i < 4; ++i) {
    if (i > 0 && (at == end || *at++ != 'x')) return std::nullopt;
    double millimetres = 0;
    const auto [stopped, error] = std::from_chars(at, end, millimetres, std::chars_format::fixed);
    if (error != std::errc() || !(millimetres >= 0 && millimetres <= kFarthest)) return std::nullopt;
    lengths[i] = static_cast<std::uint32_t>(std::lround(millimetres * scan::kUnitsPerMillimetre));
    at = stopped;
  }
  if (at != end) return std::nullopt;
  return scan::Area{lengths[0], lengths[1], lengths[2], lengths[3]};
}

}  // namespace qvn::cli
