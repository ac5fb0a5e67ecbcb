// What a scanner can do, as it tells in its version reply.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "shared/scan/settings.h"

namespace qvn::scan {

struct Capabilities {
  std::string model;
  std::vector<std::uint32_t> resolutions;  // dots per inch, ascending
  std::vector<ColorMode> modes;
  std::uint32_t width = 0;  // of the glass and the feeder, in 1/1200 inch
  std::uint32_t height = 0;
  bool feeder = false;

  // What people want unless they say otherwise: 300 dpi, or the next lower; gray; the whole glass.
  Settings defaults() const;

  // Throws Error for a setting that the scanner does not have, and for an area without a dot.
  void check(const Settings& settings) const;
};

// Lines key=value; keys that are not known are skipped. Throws Error when what a scan needs is not there.
Capabilities parseCapabilities(std::string_view text);

}  // namespace qvn::scan
