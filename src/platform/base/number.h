// Numbers as the C library reads them, whatever the process's locale.
#pragma once

#include "platform/base/export.h"

namespace qvn::platform {

// What strtod reads in the C locale: the number that the text begins with, 0 when there is none.
QVN_PLATFORM_API double toDouble(const char* text);

}  // namespace qvn::platform
