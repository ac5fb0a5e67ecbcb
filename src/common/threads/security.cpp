#include "common/threads/security.h"

#include "common/process/os_version.h"

namespace qvn {

Security::Security() : inForce_(OsVersion::getInstance().isNtFamily()) {}

Security::~Security() = default;

const platform::Access& Security::getSecurityAttributes() const { return attributes_; }

SecurityEveryone::SecurityEveryone(bool inheritable) {
  if (isInForce()) attributes_ = {.everyone = true, .inheritable = inheritable};
}

SecurityEveryone::~SecurityEveryone() = default;

}  // namespace qvn
