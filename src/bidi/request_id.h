// The numbers that tie a reply to its request.
#pragma once

#include <cstdint>

namespace qvn {

// The next of the process, one above the last and never 0. The first is a multiple of 1000 from 1000 to
// 499000, taken from the clock. May be called from any thread.
std::uint32_t nextRequestId();

}  // namespace qvn
