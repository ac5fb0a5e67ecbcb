// Opens what lies below the state directory, which the accounts of its group may write: nothing that one of
// them has put there makes another one write elsewhere.
#pragma once

#include <sys/types.h>

#include <filesystem>

#include "platform/base/unique_descriptor.h"

namespace qvn::platform {

// open(2) of a regular file with one name, whose path below the state directory has no link in it, the last
// part included. None with errno set; EACCES for anything else than such a file.
UniqueDescriptor openStateFile(const std::filesystem::path& path, int flags, mode_t mode = 0);

// unlink(2) of the same. 0 or an errno value.
int removeStateFile(const std::filesystem::path& path);

// A directory below the state directory, or that itself, for the *at functions. None with errno set.
UniqueDescriptor openStateDirectory(const std::filesystem::path& directory);

}  // namespace qvn::platform
