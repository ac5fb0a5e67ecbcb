// Error codes of the platform layer and the calling thread's last error.
//
// Every operation of this layer that can fail answers an ErrorCode: 0 for success, else the published
// system error number that the library passes on unchanged (2 for a missing key, 259 for an exhausted list).
#pragma once

#include <cstdint>

#include "platform/base/export.h"

namespace qvn::platform {

using ErrorCode = std::uint32_t;

inline constexpr ErrorCode kSuccess = 0;
inline constexpr ErrorCode kFileNotFound = 2;
inline constexpr ErrorCode kPathNotFound = 3;
inline constexpr ErrorCode kTooManyOpenFiles = 4;
inline constexpr ErrorCode kAccessDenied = 5;
inline constexpr ErrorCode kInvalidHandle = 6;
inline constexpr ErrorCode kNotEnoughMemory = 8;
inline constexpr ErrorCode kWriteFault = 29;
inline constexpr ErrorCode kInvalidParameter = 87;
inline constexpr ErrorCode kDiskFull = 112;
inline constexpr ErrorCode kModuleNotFound = 126;
inline constexpr ErrorCode kProcedureNotFound = 127;
inline constexpr ErrorCode kBadExecutableFormat = 193;
inline constexpr ErrorCode kNameTooLong = 206;
inline constexpr ErrorCode kMoreData = 234;
inline constexpr ErrorCode kNoMoreItems = 259;
inline constexpr ErrorCode kNotOwner = 288;
inline constexpr ErrorCode kMessageNotFound = 317;
inline constexpr ErrorCode kRegistryCorrupt = 1015;
inline constexpr ErrorCode kRegistryIoFailed = 1016;
inline constexpr ErrorCode kKeyDeleted = 1018;
inline constexpr ErrorCode kKeyHasChildren = 1020;
inline constexpr ErrorCode kSpoolerUnavailable = 1722;
inline constexpr ErrorCode kMonitorAlreadyInstalled = 3006;

// The calling thread's last error; 0 on a new thread. Operations of this layer set it when they fail and
// leave it alone when they succeed.
QVN_PLATFORM_API ErrorCode lastError();
QVN_PLATFORM_API void setLastError(ErrorCode code);

// Maps an errno value to the error code of the same meaning (ENOENT to 2, EACCES to 5, ENOSPC to 112, ...);
// 1359 (internal error) for one without a counterpart.
QVN_PLATFORM_API ErrorCode errorFromErrno(int error);

}  // namespace qvn::platform
