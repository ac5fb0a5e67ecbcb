// The number of a host's connection to a port, never given twice.
#pragma once

#include <cstdint>

namespace sim {

using ConnectionId = std::uint64_t;

}  // namespace sim
