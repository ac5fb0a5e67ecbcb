#include "common/process/os_version.h"

#include "common/exception.h"
#include "platform/base/error.h"

namespace qvn {

const OsVersion& OsVersion::getInstance() {
  static const OsVersion instance;
  return instance;
}

OsVersion::OsVersion() {
  const platform::ErrorCode error = platform::osVersion(version_);
  if (error != platform::kSuccess) {
    throw Win32Exception("OsVersion::OsVersion(): GetVersionEx failed", error, "OsVersion", 195);
  }
}

}  // namespace qvn
