#include <string>

#include "kit/setting.h"
#include "platform/registry/registry.h"
#include "qvn/transport/settings.h"

namespace qvn {

namespace registry = platform::registry;

std::uint32_t transportSetting(const char* key, const char* name, std::uint32_t defaultValue) {
  std::string data = registry::dwordBytes(defaultValue);
  readSetting(kLibraryRegistryRoot, std::string(kLibraryRegistryRoot) + key, name, registry::ValueType::Dword,
              data);
  return registry::dwordOf(registry::ValueType::Dword, data).value_or(defaultValue);
}

}  // namespace qvn
