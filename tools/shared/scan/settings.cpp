#include "shared/scan/settings.h"

namespace qvn::scan {

namespace {

std::uint64_t bytesOf(std::uint64_t dots, ColorMode mode) {
  switch (mode) {
    case ColorMode::BlackAndWhite:
      return (dots + 7) / 8;
    case ColorMode::Gray:
      return dots;
    case ColorMode::Color:
      break;
  }
  return 3 * dots;
}

}  // namespace

PageSize pageSize(const Settings& settings) {
  const std::uint64_t dots = std::uint64_t{settings.area.width} * settings.dpi / kUnitsPerInch;
  const std::uint64_t lines = std::uint64_t{settings.area.height} * settings.dpi / kUnitsPerInch;
  return {dots, bytesOf(dots, settings.mode), lines};
}

const char* nameOf(ColorMode mode) {
  constexpr const char* kNames[] = {"bw", "gray", "color"};
  return kNames[static_cast<std::size_t>(mode)];
}

std::optional<ColorMode> colorModeNamed(std::string_view name) {
  for (const ColorMode mode : kColorModes) {
    if (name == nameOf(mode)) return mode;
  }
  return std::nullopt;
}

}  // namespace qvn::scan
