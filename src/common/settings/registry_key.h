// An open registry key, and what the library does with one.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "common/threads/security.h"
#include "platform/registry/registry.h"
#include "qvn/transport/data.h"

namespace qvn {

// Every failure throws Win32Exception with the registry's code, the file "RegistryKey" and a message that
// names the operation. Used by one thread at a time.
class RegistryKey {
 public:
  static constexpr platform::registry::Hive kLocalMachine = platform::registry::Hive::LocalMachine;

  // Opens the key, made with its whole path when `create` is set.
  RegistryKey(const std::string& path, bool create, platform::registry::Hive root);

  void openKey(const std::string& path, platform::registry::Hive root);
  // The new keys are open to everyone.
  void createKey(const std::string& path, platform::registry::Hive root);

  // False, the out-value untouched, when the value is absent, or binary and cannot be read. A value of
  // another type is a failure with code 0.
  bool getValue(const std::string& name, std::uint32_t& value) const;
  bool getValue(const std::string& name, std::string& value) const;
  bool getValue(const std::string& name, Data& value) const;

  void setValue(const std::string& name, std::uint32_t value);
  void setValue(const std::string& name, const std::string& value);
  void setValue(const std::string& name, const Data& value);

  // An absent value is no failure.
  void deleteValue(const std::string& name);

  // Deletes a key below this one with everything below it; an absent one is no failure. When it is itself
  // named SOFTWARE, in any case, it is emptied and kept.
  void recurseDeleteKey(const std::string& path);
  // The same for a key named by its whole path; does nothing for an empty one.
  static void deleteTree(std::string path, platform::registry::Hive root);

  std::vector<std::string> getChildrenNames(std::size_t limit) const;
  std::vector<std::string> getValueNames() const;
  // Lends each value, see platform::registry::forEachValue.
  void forEachValue(const std::function<void(std::string_view name, platform::registry::ValueType,
                                             std::string_view data)>& reader) const;

 private:
  static void recurseDeleteKey(const std::string& path, const platform::registry::Key& parent, bool keep);

  platform::registry::Key key_;
  SecurityEveryone security_{true};
};

}  // namespace qvn
