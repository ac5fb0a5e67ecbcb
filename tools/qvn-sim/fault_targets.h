// The commands of all protocols, as faults name them.
#pragma once

#include <optional>
#include <string_view>

#include "faults/fault_switches.h"

namespace sim {

std::optional<FaultTarget> faultTargetNamed(std::string_view command);

}  // namespace sim
