#include <cstring>
#include <string>

#include "platform/registry/registry.h"
#include "qvn/transport/settings.h"

namespace qvn {

namespace registry = platform::registry;

std::uint32_t transportSetting(const char* key, const char* name, std::uint32_t defaultValue) {
  registry::Key root;
  if (registry::openKey(registry::Hive::LocalMachine, kLibraryRegistryRoot, root) != platform::kSuccess) {
    return defaultValue;
  }
  const std::string path = std::string(kLibraryRegistryRoot) + key;
  registry::Key settings;
  if (registry::createKey(registry::Hive::LocalMachine, path, {.everyone = true, .inheritable = true},
                          settings) != platform::kSuccess) {
    return defaultValue;
  }
  registry::Value value;
  switch (registry::getValue(settings, name, value)) {
    case platform::kSuccess: {
      std::uint32_t stored = 0;
      if (value.type != registry::ValueType::Dword || value.data.size() != sizeof stored) return defaultValue;
      std::memcpy(&stored, value.data.data(), sizeof stored);
      return stored;
    }
    case platform::kFileNotFound: {
      char bytes[sizeof defaultValue];
      std::memcpy(bytes, &defaultValue, sizeof defaultValue);
      registry::setValue(settings, name, registry::ValueType::Dword, {bytes, sizeof bytes});
      return defaultValue;
    }
    default:
      return defaultValue;
  }
}

}  // namespace qvn
