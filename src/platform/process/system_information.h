// What the library asks about the system it runs on.
#pragma once

#include <cstdint>
#include <string>

#include "platform/base/error.h"

namespace qvn::platform {

struct OsVersionInfo {
  std::uint32_t platformId;  // 1 the 9x family, 2 the NT family
  std::uint32_t majorVersion;
  std::uint32_t minorVersion;
  std::uint32_t buildNumber;
};

// The version that this layer stands for: of the NT family, major version 10.
QVN_PLATFORM_API ErrorCode osVersion(OsVersionInfo& version);

// The system's English message for a result code, ended by "\r\n" as the system does. 317 when the code has
// none (every code that the library itself names has one).
QVN_PLATFORM_API ErrorCode messageText(std::uint32_t code, std::string& text);

QVN_PLATFORM_API ErrorCode computerName(std::string& name);

// The ANSI code page number, four digits.
QVN_PLATFORM_API std::uint32_t ansiCodePage();

}  // namespace qvn::platform
