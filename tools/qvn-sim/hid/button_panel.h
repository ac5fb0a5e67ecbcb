// What the button panel of the device sends: reports, and events about itself.
#pragma once

#include <cstdint>

#include "base/bytes.h"

namespace sim::panel {

// The category of all events of the panel.
inline constexpr std::uint32_t kEventCategory = 2;

// The button that is down; 0 when none is.
Bytes buttonReport(std::uint8_t button);
// A report that only carries its number: for measuring.
Bytes numberedReport(std::uint32_t number);
Bytes event(std::uint32_t id, std::uint32_t category);

}  // namespace sim::panel
