#include <string>

#include "kit/setting.h"
#include "kit/transport_key.h"
#include "platform/base/error.h"
#include "platform/registry/registry.h"
#include "qvn/transport/settings.h"

namespace qvn {

namespace registry = platform::registry;

std::uint32_t transportSetting(const char* key, const char* name, std::uint32_t defaultValue) {
  std::string data = registry::dwordBytes(defaultValue);
  readSetting(kLibraryRegistryRoot, kLibraryRegistryRoot + std::string(key), name, registry::ValueType::Dword,
              data);
  return registry::dwordOf(registry::ValueType::Dword, data).value_or(defaultValue);
}

std::string transportTextSetting(const char* key, const char* name, const std::string& defaultValue) {
  std::string data = defaultValue;
  readSetting(kLibraryRegistryRoot, kLibraryRegistryRoot + std::string(key), name,
              registry::ValueType::String, data);
  return data;
}

std::uint32_t setTransportTextSetting(const char* key, const char* name, const std::string& value) {
  registry::Key settings;
  const platform::ErrorCode made = makeTransportKey(key, settings);
  if (made != platform::kSuccess) return made;
  return registry::setValue(settings, name, registry::ValueType::String, value);
}

}  // namespace qvn
