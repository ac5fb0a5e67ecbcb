// The state directory as the rest of this layer uses it.
#pragma once

#include <sys/types.h>

#include <filesystem>

#include "platform/base/access.h"
#include "platform/base/error.h"

namespace qvn::platform {

// Makes one directory for the accounts that the state directory is for; one that exists is left as it is, but
// that nobody may take away what another account has put into one of root's.
ErrorCode makeStateDirectory(const std::filesystem::path& directory);

// The permissions of a file below the state directory.
mode_t fileMode(Access access);

}  // namespace qvn::platform
