// Values in the registry, put there and looked up beside whoever the test is of.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "platform/registry/registry.h"

namespace qvn::test {

inline bool keyExists(const std::string& path) {
  platform::registry::Key key;
  return openKey(platform::registry::Hive::LocalMachine, path, key) == platform::kSuccess;
}

inline void store(const std::string& path, const std::string& name, platform::registry::ValueType type,
                  const std::string& data) {
  platform::registry::Key key;
  if (createKey(platform::registry::Hive::LocalMachine, path, {}, key) != platform::kSuccess ||
      setValue(key, name, type, data) != platform::kSuccess) {
    throw std::runtime_error("cannot store " + path + name);
  }
}
inline void store(const std::string& path, const std::string& name, const std::string& text) {
  store(path, name, platform::registry::ValueType::String, text);
}
inline void store(const std::string& path, const std::string& name, std::uint32_t value) {
  store(path, name, platform::registry::ValueType::Dword,
        {reinterpret_cast<const char*>(&value), sizeof value});
}

// Empty when there is none.
inline std::string storedText(const std::string& path, const std::string& name) {
  platform::registry::Key key;
  platform::registry::Value value;
  if (openKey(platform::registry::Hive::LocalMachine, path, key) == platform::kSuccess) {
    getValue(key, name, value);
  }
  return value.data;
}

}  // namespace qvn::test
