// Whether this process is still the one that something was made in.
#pragma once

#include <cstdint>

#include "platform/base/export.h"

namespace qvn::platform {

// How many forks this process descends by from the one that asked first: another number than before means
// that it is a child, in which no thread runs but the one that forked, and in which what the others had
// locked stays locked. Never waits.
QVN_PLATFORM_API std::uint32_t forks();

}  // namespace qvn::platform
