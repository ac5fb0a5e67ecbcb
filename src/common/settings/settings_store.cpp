#include "common/settings/settings_store.h"

#include <utility>

#include "common/exception.h"
#include "common/settings/registry_key.h"
#include "common/settings/stored_value.h"
#include "kit/setting.h"
#include "platform/base/error.h"

namespace qvn {
namespace {

constexpr std::size_t kMaxLocalIds = 100;

// Runs an operation on the registry; a failure becomes the thread's last error and false.
template <typename Operation>
bool guarded(Operation&& operation) {
  try {
    return operation();
  } catch (const Win32Exception& exception) {
    platform::setLastError(exception.getCode());
    return false;
  }
}

}  // namespace

SettingsStore::SettingsStore(std::string rootPath, std::string localId)
    : rootPath_(std::move(rootPath)), localId_(std::move(localId)) {}

SettingsStore::~SettingsStore() = default;

template <typename Value>
bool SettingsStore::readOrDefault(const std::string& keyPath, const std::string& name, Value& value,
                                  const Value& defaultValue, std::uint32_t selection) const {
  using Stored = StoredValue<Value>;
  std::string data = Stored::encode(defaultValue);
  return readSetting(rootPath_, keyPathOf(keyPath, selection), name, Stored::type, data) &&
         Stored::decode(data, value);
}

template <typename Value>
bool SettingsStore::read(const std::string& keyPath, const std::string& name, Value& value,
                         std::uint32_t selection) const {
  return guarded([&] {
    return RegistryKey(keyPathOf(keyPath, selection), false, RegistryKey::kLocalMachine)
        .getValue(name, value);
  });
}

template <typename Value>
bool SettingsStore::write(const std::string& keyPath, const std::string& name, const Value& value,
                          std::uint32_t selection) const {
  return guarded([&] {
    RegistryKey(keyPathOf(keyPath, selection), true, RegistryKey::kLocalMachine).setValue(name, value);
    return true;
  });
}

bool SettingsStore::getBinaryOrDefault(const std::string& keyPath, const std::string& name, Data& value,
                                       const Data& defaultValue, std::uint32_t selection) const {
  return readOrDefault(keyPath, name, value, defaultValue, selection);
}

bool SettingsStore::getBinary(const std::string& keyPath, const std::string& name, Data& value,
                              std::uint32_t selection) const {
  return read(keyPath, name, value, selection);
}

bool SettingsStore::getLongOrDefault(const std::string& keyPath, const std::string& name,
                                     std::uint32_t& value, std::uint32_t defaultValue,
                                     std::uint32_t selection) const {
  return readOrDefault(keyPath, name, value, defaultValue, selection);
}

bool SettingsStore::getLong(const std::string& keyPath, const std::string& name, std::uint32_t& value,
                            std::uint32_t selection) const {
  return read(keyPath, name, value, selection);
}

bool SettingsStore::getStringOrDefault(const std::string& keyPath, const std::string& name,
                                       std::string& value, const std::string& defaultValue,
                                       std::uint32_t selection) const {
  return readOrDefault(keyPath, name, value, defaultValue, selection);
}

bool SettingsStore::getString(const std::string& keyPath, const std::string& name, std::string& value,
                              std::uint32_t selection) const {
  return read(keyPath, name, value, selection);
}

bool SettingsStore::setString(const std::string& keyPath, const std::string& name, const std::string& value,
                              std::uint32_t selection) const {
  return write(keyPath, name, value, selection);
}

bool SettingsStore::setLong(const std::string& keyPath, const std::string& name, std::uint32_t value,
                            std::uint32_t selection) const {
  return write(keyPath, name, value, selection);
}

bool SettingsStore::getValueNames(const std::string& keyPath, std::vector<std::string>& names,
                                  std::uint32_t selection) const {
  return guarded([&] {
    names = RegistryKey(keyPathOf(keyPath, selection), false, RegistryKey::kLocalMachine).getValueNames();
    return true;
  });
}

bool SettingsStore::forEachValue(const std::string& keyPath, const ValueReader& reader,
                                 std::uint32_t selection) const {
  return guarded([&] {
    RegistryKey(keyPathOf(keyPath, selection), false, RegistryKey::kLocalMachine).forEachValue(reader);
    return true;
  });
}

bool SettingsStore::deleteKey(const std::string& keyPath, std::uint32_t selection) const {
  const std::string path = keyPathOf(keyPath, selection);
  const RegistryKey key(path, false, RegistryKey::kLocalMachine);
  RegistryKey::deleteTree(path, RegistryKey::kLocalMachine);
  return true;
}

bool SettingsStore::deleteValue(const std::string& keyPath, const std::string& name,
                                std::uint32_t selection) const {
  return guarded([&] {
    RegistryKey(keyPathOf(keyPath, selection), false, RegistryKey::kLocalMachine).deleteValue(name);
    return true;
  });
}

bool SettingsStore::removeAll() {
  return guarded([&] {
    if (!localId_.empty()) {
      RegistryKey::deleteTree(rootPath_ + "Local\\" + localId_, RegistryKey::kLocalMachine);
      RegistryKey local(rootPath_ + "Local\\", false, RegistryKey::kLocalMachine);
      if (!local.getChildrenNames(kMaxLocalIds).empty()) return false;
    }
    RegistryKey::deleteTree(rootPath_, RegistryKey::kLocalMachine);
    return true;
  });
}

void SettingsStore::fullPath(std::string& path, std::uint32_t selection) const {
  path = rootPath_;
  if (localId_.empty()) return;
  path += selection == kShared ? "Shared\\" : "Local\\" + localId_;
}

std::string SettingsStore::keyPathOf(const std::string& keyPath, std::uint32_t selection) const {
  std::string path;
  fullPath(path, selection);
  return path + keyPath;
}

}  // namespace qvn
