#include "shared/scan/capabilities.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

#include "shared/scan/error.h"

namespace qvn::scan {

namespace {

// Resolutions, lengths and positions are sent in 16 bits.
constexpr std::uint32_t kLargestNumber = 0xFFFF;
constexpr std::uint32_t kUsualResolution = 300;

// The part before the first separator; `rest` keeps what is behind it.
std::string_view takePart(std::string_view& rest, char separator) {
  const std::size_t end = rest.find(separator);
  const std::string_view part = rest.substr(0, end);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  return part;
}

std::uint32_t parseSize(std::string_view text, std::string_view key) {
  std::uint32_t value = 0;
  const char* const end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stopped != end || value == 0 || value > kLargestNumber) {
    throw Error(Problem::BadAnswer,
                "the scanner gives '" + std::string(text) + "' as its " + std::string(key));
  }
  return value;
}

std::string millimetres(std::uint32_t units) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f", units / kUnitsPerMillimetre);
  return text;
}

}  // namespace

Capabilities parseCapabilities(std::string_view text) {
  Capabilities found;
  while (!text.empty()) {
    std::string_view value = takePart(text, '\n');
    const std::string_view key = takePart(value, '=');
    if (key == "model") {
      found.model = value;
    } else if (key == "dpi") {
      while (!value.empty()) found.resolutions.push_back(parseSize(takePart(value, ','), key));
    } else if (key == "modes") {
      while (!value.empty()) {
        if (const auto mode = colorModeNamed(takePart(value, ','))) found.modes.push_back(*mode);
      }
    } else if (key == "width") {
      found.width = parseSize(value, key);
    } else if (key == "height") {
      found.height = parseSize(value, key);
    } else if (key == "feeder") {
      found.feeder = value == "1";
    }
  }
  if (found.resolutions.empty() || found.modes.empty() || found.width == 0 || found.height == 0) {
    throw Error(Problem::BadAnswer, "the scanner does not tell its resolutions, modes and size");
  }
  std::sort(found.resolutions.begin(), found.resolutions.end());
  return found;
}

Settings Capabilities::defaults() const {
  Settings settings;
  const auto above = std::upper_bound(resolutions.begin(), resolutions.end(), kUsualResolution);
  settings.dpi = above == resolutions.begin() ? *above : *(above - 1);
  const bool hasGray = std::find(modes.begin(), modes.end(), ColorMode::Gray) != modes.end();
  settings.mode = hasGray ? ColorMode::Gray : modes.front();
  settings.area = {0, 0, width, height};
  return settings;
}

void Capabilities::check(const Settings& settings) const {
  if (std::find(resolutions.begin(), resolutions.end(), settings.dpi) == resolutions.end()) {
    std::string all;
    for (const std::uint32_t dpi : resolutions) all += (all.empty() ? "" : ", ") + std::to_string(dpi);
    throw Error(Problem::Refused,
                "the scanner has no " + std::to_string(settings.dpi) + " dpi; it has " + all);
  }
  if (std::find(modes.begin(), modes.end(), settings.mode) == modes.end()) {
    throw Error(Problem::Refused, std::string("the scanner has no mode ") + nameOf(settings.mode));
  }
  if (settings.source == Source::Feeder && !feeder) {
    throw Error(Problem::Refused, "the scanner has no feeder");
  }
  const Area& area = settings.area;
  if (area.left > width || area.width > width - area.left || area.top > height ||
      area.height > height - area.top) {
    throw Error(Problem::Refused, "the area reaches beyond what the scanner sees, " + millimetres(width) +
                                      " by " + millimetres(height) + " mm");
  }
  const PageSize size = pageSize(settings);
  if (size.dots == 0 || size.lines == 0) {
    throw Error(Problem::Refused, "the area is smaller than a dot");
  }
}

}  // namespace qvn::scan
