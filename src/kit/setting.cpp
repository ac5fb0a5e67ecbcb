#include "kit/setting.h"
#include "platform/base/error.h"

namespace qvn {

namespace registry = platform::registry;

bool readSetting(const std::string& root, const std::string& path, const std::string& name,
                 registry::ValueType type, std::string& data) {
  constexpr registry::Hive kHive = registry::Hive::LocalMachine;
  registry::Key key;
  if (registry::openKey(kHive, root, key) != platform::kSuccess) return false;
  if (registry::createKey(kHive, path, {.everyone = true, .inheritable = true}, key) != platform::kSuccess) {
    return false;
  }
  bool typeMatches = true;
  const platform::ErrorCode error =
      registry::readValue(key, name, [&](registry::ValueType storedType, std::string_view stored) {
        typeMatches = storedType == type;
        if (typeMatches) data = stored;
      });
  if (error == platform::kFileNotFound)
    return registry::setValue(key, name, type, data) == platform::kSuccess;
  if (!typeMatches) platform::setLastError(platform::kSuccess);
  return error == platform::kSuccess && typeMatches;
}

}  // namespace qvn
