// An area as a person writes it.
#pragma once

#include <optional>
#include <string_view>

#include "shared/scan/settings.h"

namespace qvn::cli {

// "10x20x105.5x148": left, top, width and height in millimetres. None when the text is anything else.
std::optional<scan::Area> parseArea(std::string_view text);

}  // namespace qvn::cli
