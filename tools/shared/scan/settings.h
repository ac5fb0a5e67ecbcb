// The settings of a scan, and what a page has by them. Lengths and positions are in 1/1200 inch from the top
// left corner of the glass or sheet.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace qvn::scan {

inline constexpr std::uint32_t kUnitsPerInch = 1200;
inline constexpr double kUnitsPerMillimetre = kUnitsPerInch / 25.4;

// The numbers are the device's.
enum class ColorMode : std::uint8_t { BlackAndWhite = 0, Gray = 1, Color = 2 };
inline constexpr std::array kColorModes = {ColorMode::BlackAndWhite, ColorMode::Gray, ColorMode::Color};

enum class Source : std::uint8_t { Flatbed, Feeder };

struct Area {
  std::uint32_t left = 0;
  std::uint32_t top = 0;
  std::uint32_t width = 0;
  std::uint32_t height = 0;

  bool operator==(const Area&) const = default;
};

struct Settings {
  std::uint32_t dpi = 0;
  ColorMode mode = ColorMode::Gray;
  Area area;
  Source source = Source::Flatbed;

  bool operator==(const Settings&) const = default;
};

// The lines of a page follow each other without anything between. Black and white: 8 dots a byte, the first
// in the highest bit, 1 is black, lines filled up with zero bits. Gray: a byte a dot. Color: red, green,
// blue.
struct PageSize {
  std::uint64_t dots;  // in a line
  std::uint64_t bytesPerLine;
  std::uint64_t lines;

  std::uint64_t bytes() const { return bytesPerLine * lines; }
};
PageSize pageSize(const Settings& settings);

// "bw", "gray", "color": as the device and the command line name them.
const char* nameOf(ColorMode mode);
std::optional<ColorMode> colorModeNamed(std::string_view name);

}  // namespace qvn::scan
