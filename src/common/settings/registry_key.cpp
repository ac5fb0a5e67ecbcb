#include "common/settings/registry_key.h"

#include <string_view>
#include <type_traits>

#include "common/exception.h"
#include "common/settings/stored_value.h"
#include "common/text.h"
#include "platform/base/error.h"

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

// Reads a value of one type: false when it is absent, or binary and cannot be read. `failure` begins the
// message of what else goes wrong.
template <typename Value>
bool readTyped(const registry::Key& key, const std::string& name, Value& value, const char* failure,
               const std::string& failureName, std::int32_t line) {
  bool typeMatches = true;
  const ErrorCode code =
      registry::readValue(key, name, [&](registry::ValueType type, std::string_view bytes) {
        typeMatches = type == StoredValue<Value>::type && StoredValue<Value>::decode(bytes, value);
      });
  if (code == platform::kFileNotFound) return false;
  if (std::is_same_v<Value, Data> && code != platform::kSuccess) return false;
  if (code != platform::kSuccess || !typeMatches) {
    fail(failure + failureName + (typeMatches ? "" : " : incorrect value type"), code, line);
  }
  return true;
}

template <typename Value>
ErrorCode writeTyped(const registry::Key& key, const std::string& name, const Value& value) {
  return registry::setValue(key, name, StoredValue<Value>::type, StoredValue<Value>::encode(value));
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
  return readTyped(key_, name, value, "RegistryKey::getValue(ulong)", name, __LINE__);
}

bool RegistryKey::getValue(const std::string& name, std::string& value) const {
  return readTyped(key_, name, value, "RegistryKey::getValue(string) ", name, __LINE__);
}

bool RegistryKey::getValue(const std::string& name, Data& value) const {
  return readTyped(key_, name, value, "RegistryKey::getValue(binary)", "", __LINE__);
}

void RegistryKey::setValue(const std::string& name, std::uint32_t value) {
  check(writeTyped(key_, name, value), "RegistryKey::setValue(ulong): Unable to set " + name, __LINE__);
}

void RegistryKey::setValue(const std::string& name, const std::string& value) {
  check(writeTyped(key_, name, value), "RegistryKey::setValue(string): Unable to set " + name, __LINE__);
}

void RegistryKey::setValue(const std::string& name, const Data& value) {
  check(writeTyped(key_, name, value), "RegistryKey::setValue(binary): Unable to set " + name, __LINE__);
}

void RegistryKey::deleteValue(const std::string& name) {
  const ErrorCode code = registry::deleteValue(key_, name);
  if (code != platform::kFileNotFound) check(code, "RegistryKey::deleteValue()", __LINE__);
}

void RegistryKey::recurseDeleteKey(const std::string& path) {
  recurseDeleteKey(path, key_, equalsIgnoringCase(path, "SOFTWARE"));
}

void RegistryKey::recurseDeleteKey(const std::string& path, const registry::Key& parent, bool keep) {
  registry::Key key;
  const ErrorCode code = registry::openSubkey(parent, path, key);
  if (code == platform::kFileNotFound) return;
  check(code, "RegistryKey::recurseDeleteKey() RegOpenKey()", __LINE__);
  while (true) {
    std::vector<std::string> first;
    check(registry::listSubkeys(key, 1, first), "RegistryKey::recurseDeleteKey() RegOpenKey()", __LINE__);
    if (first.empty()) break;
    // Whatever it is called: a key that stayed would be the first one again.
    recurseDeleteKey(first.front(), key, false);
  }
  if (keep) return;
  check(registry::deleteKey(parent, path), "RegistryKey::recurseDeleteKey() RegDeleteKey()", __LINE__);
}

void RegistryKey::deleteTree(std::string path, registry::Hive root) {
  while (path.ends_with('\\')) path.pop_back();
  if (path.empty()) return;
  const std::size_t name = path.rfind('\\') + 1;  // 0 when there is only one component
  RegistryKey(path.substr(0, name), false, root).recurseDeleteKey(path.substr(name));
}

std::vector<std::string> RegistryKey::getChildrenNames(std::size_t limit) const {
  std::vector<std::string> names;
  check(registry::listSubkeys(key_, limit, names), "RegistryKey::getChildrenNames()", __LINE__);
  return names;
}

std::vector<std::string> RegistryKey::getValueNames() const {
  std::vector<std::string> names;
  forEachValue(
      [&](std::string_view name, registry::ValueType, std::string_view) { names.emplace_back(name); });
  return names;
}

void RegistryKey::forEachValue(
    const std::function<void(std::string_view, registry::ValueType, std::string_view)>& reader) const {
  check(registry::forEachValue(key_, reader), "RegistryKey:getValueNames()", __LINE__);
}

}  // namespace qvn
