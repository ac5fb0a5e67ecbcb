// Which bit of the clients' alert mask an alert belongs to.
#pragma once

#include <cstdint>

#include "qvn/transport/data.h"

namespace qvn {

// 0 for data that is no alert or of a kind that no client can ask for. Traces its decision.
std::uint32_t getAlertType(const Data& alert);

}  // namespace qvn
