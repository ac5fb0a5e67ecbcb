#include "page/scan_settings.h"

namespace sim {

std::size_t ScanSettings::bytesPerLine() const {
  switch (format) {
    case ColorFormat::BlackAndWhite:
      return (dots() + 7) / 8;
    case ColorFormat::Gray:
      return dots();
    case ColorFormat::Color:
      break;
  }
  return std::size_t{3} * dots();
}

bool ScanSettings::isPossible() const {
  return dots() > 0 && lines() > 0 && left + width <= kGlassWidth && top + height <= kGlassHeight;
}

}  // namespace sim
