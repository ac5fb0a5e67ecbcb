// What a host has set for its next page. Lengths and positions are in 1/1200 inch.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace sim {

inline constexpr std::uint32_t kUnitsPerInch = 1200;
// The glass and the feeder: 8.5 by 11.7 inch.
inline constexpr std::uint32_t kGlassWidth = 10200;
inline constexpr std::uint32_t kGlassHeight = 14040;
inline constexpr std::array<std::uint16_t, 7> kResolutions = {75, 100, 150, 200, 300, 600, 1200};

enum class ColorFormat : std::uint8_t { BlackAndWhite, Gray, Color };
enum class PageOrigin : std::uint8_t { Flatbed, Feeder };

struct ScanSettings {
  std::uint32_t dpi = 300;
  ColorFormat format = ColorFormat::Gray;
  std::uint32_t left = 0;
  std::uint32_t top = 0;
  std::uint32_t width = kGlassWidth;
  std::uint32_t height = kGlassHeight;
  PageOrigin origin = PageOrigin::Flatbed;

  std::uint32_t dots() const { return width * dpi / kUnitsPerInch; }
  std::uint32_t lines() const { return height * dpi / kUnitsPerInch; }
  std::size_t bytesPerLine() const;
  // Whether there is a page of that area at all.
  bool isPossible() const;
};

}  // namespace sim
