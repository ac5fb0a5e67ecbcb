// Makes and opens the file that holds the registry.
#pragma once

#include <filesystem>
#include <string>

#include "platform/base/error.h"

struct MDB_env;

namespace qvn::platform::registry {

struct StoreFailure {
  ErrorCode code = kSuccess;
  std::string reason;
};

// What an LMDB or errno value means to the registry's callers.
StoreFailure describeStoreError(const std::filesystem::path& file, int error);

std::filesystem::path storeFile(const std::filesystem::path& stateDirectory);

// Opens the store in the state directory for the whole life of the process, making it if there is none. A
// file that is not a whole and sound store is refused and left as it is. Null with `failure` set.
MDB_env* openStoreFile(const std::filesystem::path& stateDirectory, StoreFailure& failure);

}  // namespace qvn::platform::registry
