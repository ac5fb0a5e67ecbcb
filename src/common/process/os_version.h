// The operating system's version, read once, when it is first asked for.
#pragma once

#include <cstdint>

#include "platform/process/system_information.h"

namespace qvn {

class OsVersion {
 public:
  static const OsVersion& getInstance();

  bool isWin9xFamily() const { return version_.platformId == 1; }
  bool isNtFamily() const { return version_.platformId == 2; }
  std::uint32_t majorVersion() const { return version_.majorVersion; }
  std::uint32_t minorVersion() const { return version_.minorVersion; }

 private:
  OsVersion();

  platform::OsVersionInfo version_{};
};

}  // namespace qvn
