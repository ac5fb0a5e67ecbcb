#include "platform/base/failure.h"

#include <cerrno>

namespace qvn::platform {

ErrorCode fail(ErrorCode code) {
  if (code != kSuccess) setLastError(code);
  return code;
}

ErrorCode failWithErrno() { return fail(errorFromErrno(errno)); }

}  // namespace qvn::platform
