#include "common/settings/registry_key.h"

#include <cstring>
#include <string_view>

#include "common/exception.h"
#include "common/text.h"

namespace qvn {

namespace registry = platform::registry;
using platform::ErrorCode;

namespace {

[[noreturn]] void fail(const std::string& message, ErrorCode code, std::int32_t line) {
  throw Win32Exception(message, code, "RegistryKey", line);
}

void check(ErrorCode code, const std::string& message, std::int32_t line) {
  if (code != platform::kSuccess) fail(message, code, line);
}

// Reads a value of one type: false when it is absent. `take` gets its bytes.
template <typename Take>
bool readTyped(const registry::Key& key, const std::string& name, registry::ValueType type,
               const std::string& message, Take&& take, std::int32_t line) {
  bool typeMatches = true;
  const ErrorCode code =
      registry::readValue(key, name, [&](registry::ValueType storedType, std::string_view bytes) {
        typeMatches = storedType == type;
        if (typeMatches) typeMatches = take(bytes);
      });
  if (code == platform::kFileNotFound) return false;
  if (code != platform::kSuccess || !typeMatches) {
    fail(message + (typeMatches ? "" : " : incorrect value type"), code, line);
  }
  return true;
}

}  // namespace

RegistryKey::RegistryKey(const std::string& path, bool create, registry::Hive root) {
  if (create) {
    createKey(path, root);
  } else {
    openKey(path, root);
  }
}

void RegistryKey::openKey(const std::string& path, registry::Hive root) {
  check(registry::openKey(root, path, key_), "RegistryKey::openKey()", __LINE__);
}

void RegistryKey::createKey(const std::string& path, registry::Hive root) {
  check(registry::createKey(root, path, security_.getSecurityAttributes(), key_), "RegistryKey::createKey()",
        __LINE__);
}

bool RegistryKey::getValue(const std::string& name, std::uint32_t& value) const {
  return readTyped(
      key_, name, registry::ValueType::Dword, "RegistryKey::getValue(ulong)" + name,
      [&](std::string_view bytes) {
        if (bytes.size() != sizeof value) return false;
        std::memcpy(&value, bytes.data(), sizeof value);
        return true;
      },
      __LINE__);
}

bool RegistryKey::getValue(const std::string& name, std::string& value) const {
  return readTyped(
      key_, name, registry::ValueType::String, "RegistryKey::getValue(string) " + name,
      [&](std::string_view bytes) {
        value = bytes;
        return true;
      },
      __LINE__);
}

bool RegistryKey::getValue(const std::string& name, Data& value) const {
  return readTyped(
      key_, name, registry::ValueType::Binary, "RegistryKey::getValue(binary)",
      [&](std::string_view bytes) {
        value = Data(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
        return true;
      },
      __LINE__);
}

void RegistryKey::setValue(const std::string& name, std::uint32_t value) {
  char bytes[sizeof value];
  std::memcpy(bytes, &value, sizeof value);
  check(registry::setValue(key_, name, registry::ValueType::Dword, {bytes, sizeof bytes}),
        "RegistryKey::setValue(ulong): Unable to set " + name, __LINE__);
}

void RegistryKey::setValue(const std::string& name, const std::string& value) {
  check(registry::setValue(key_, name, registry::ValueType::String, value),
        "RegistryKey::setValue(string): Unable to set " + name, __LINE__);
}

void RegistryKey::setValue(const std::string& name, const Data& value) {
  const std::string_view bytes = bytesAsText(value);
  check(registry::setValue(key_, name, registry::ValueType::Binary, bytes),
        "RegistryKey::setValue(binary): Unable to set " + name, __LINE__);
}

void RegistryKey::deleteValue(const std::string& name) {
  const ErrorCode code = registry::deleteValue(key_, name);
  if (code != platform::kFileNotFound) check(code, "RegistryKey::deleteValue()", __LINE__);
}

void RegistryKey::recurseDeleteKey(const std::string& path) { recurseDeleteKey(path, key_); }

void RegistryKey::recurseDeleteKey(const std::string& path, const registry::Key& parent) {
  registry::Key key;
  const ErrorCode code = registry::openSubkey(parent, path, key);
  if (code == platform::kFileNotFound) return;
  check(code, "RegistryKey::recurseDeleteKey() RegOpenKey()", __LINE__);
  while (true) {
    std::vector<std::string> first;
    check(registry::listSubkeys(key, 1, first), "RegistryKey::recurseDeleteKey() RegOpenKey()", __LINE__);
    if (first.empty()) break;
    recurseDeleteKey(first.front(), key);
  }
  if (equalsIgnoringCase(path, "SOFTWARE")) return;
  check(registry::deleteKey(parent, path), "RegistryKey::recurseDeleteKey() RegDeleteKey()", __LINE__);
}

void RegistryKey::deleteTree(std::string path, registry::Hive root) {
  while (path.ends_with('\\')) path.pop_back();
  const std::size_t separator = path.rfind('\\');
  if (separator == std::string::npos) return;
  RegistryKey(path.substr(0, separator), false, root).recurseDeleteKey(path.substr(separator + 1));
}

std::vector<std::string> RegistryKey::getChildrenNames(std::size_t limit) const {
  std::vector<std::string> names;
  check(registry::listSubkeys(key_, limit, names), "RegistryKey::getChildrenNames()", __LINE__);
  return names;
}

std::vector<std::string> RegistryKey::getValueNames() const {
  std::vector<std::string> names;
  const ErrorCode code = registry::forEachValue(
      key_, [&](std::string_view name, registry::ValueType, std::string_view) { names.emplace_back(name); });
  check(code, "RegistryKey:getValueNames()", __LINE__);
  return names;
}

}  // namespace qvn
