// The identifiers that clients name themselves by.
#pragma once

#include <cstdint>

namespace qvn {

// Never 0; the first of a process comes from the tick count, each later one is the next number. No lock; any
// thread.
std::uint32_t nextClientId();

}  // namespace qvn
