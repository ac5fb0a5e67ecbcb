#include "platform/base/error.h"

#include <cerrno>

namespace qvn::platform {
namespace {

constexpr ErrorCode kBusy = 170;
constexpr ErrorCode kAlreadyExists = 183;
constexpr ErrorCode kInternalError = 1359;
constexpr ErrorCode kTimeout = 1460;

thread_local ErrorCode lastErrorOfThread = kSuccess;

}  // namespace

ErrorCode lastError() { return lastErrorOfThread; }

void setLastError(ErrorCode code) { lastErrorOfThread = code; }

ErrorCode errorFromErrno(int error) {
  switch (error) {
    case 0:
      return kSuccess;
    case ENOENT:
      return kFileNotFound;
    case ENOTDIR:
      return kPathNotFound;
    case EMFILE:
    case ENFILE:
      return kTooManyOpenFiles;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
    case ELOOP:
      return kAccessDenied;
    case EBADF:
      return kInvalidHandle;
    case ENOMEM:
    case EAGAIN:
      return kNotEnoughMemory;
    case EIO:
      return kWriteFault;
    case EINVAL:
      return kInvalidParameter;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return kDiskFull;
    case EBUSY:
      return kBusy;
    case EEXIST:
      return kAlreadyExists;
    case ENOEXEC:
      return kBadExecutableFormat;
    case ENAMETOOLONG:
      return kNameTooLong;
    case ETIMEDOUT:
      return kTimeout;
    default:
      return kInternalError;
  }
}

}  // namespace qvn::platform
