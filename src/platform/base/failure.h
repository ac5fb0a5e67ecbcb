// How an operation of this layer answers a failure: it sets the thread's last error and returns the code.
#pragma once

#include "platform/base/error.h"

namespace qvn::platform {

// Sets the last error to `code`, unless it is success, and returns it.
ErrorCode fail(ErrorCode code);

// The same for the current errno.
ErrorCode failWithErrno();

}  // namespace qvn::platform
