// The keys that transports keep their values under.
#pragma once

#include <string>

#include "platform/base/error.h"
#include "platform/registry/registry.h"
#include "qvn/transport/settings.h"

namespace qvn {

// Makes the key, which is relative to the library's root, where it is missing. The root itself is made by
// installation: 2 while it does not exist.
inline platform::ErrorCode makeTransportKey(const char* name, platform::registry::Key& key) {
  constexpr auto kHive = platform::registry::Hive::LocalMachine;
  const platform::ErrorCode opened = platform::registry::openKey(kHive, kLibraryRegistryRoot, key);
  if (opened != platform::kSuccess) return opened;
  return platform::registry::createKey(kHive, kLibraryRegistryRoot + std::string(name),
                                       {.everyone = true, .inheritable = true}, key);
}

}  // namespace qvn
