// Named values below one root of the registry.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry/registry.h"
#include "qvn/transport/data.h"

namespace qvn {

// A key path is appended to the root as it is and so ends with a backslash as a rule ("Settings\"). The
// selection chooses the branch: 0 the library's own, 1 the one that all modules share; without a local id
// there is only the root.
//
// Operations answer true on success. On a failure of the registry, a value of another type included, they set
// the thread's last error to its code and answer false, the out-value as it was. Keeps no state: any thread.
class SettingsStore {
 public:
  static constexpr std::uint32_t kLocal = 0;
  static constexpr std::uint32_t kShared = 1;

  SettingsStore(std::string rootPath, std::string localId);
  virtual ~SettingsStore();

  // An absent value is written with the default, which is then the answer. Nothing is written, and the answer
  // is false, while the root itself does not exist.
  virtual bool getBinaryOrDefault(const std::string& keyPath, const std::string& name, Data& value,
                                  const Data& defaultValue, std::uint32_t selection) const;
  virtual bool getBinary(const std::string& keyPath, const std::string& name, Data& value,
                         std::uint32_t selection) const;
  virtual bool getLongOrDefault(const std::string& keyPath, const std::string& name, std::uint32_t& value,
                                std::uint32_t defaultValue, std::uint32_t selection) const;
  virtual bool getLong(const std::string& keyPath, const std::string& name, std::uint32_t& value,
                       std::uint32_t selection) const;
  virtual bool getStringOrDefault(const std::string& keyPath, const std::string& name, std::string& value,
                                  const std::string& defaultValue, std::uint32_t selection) const;
  virtual bool getString(const std::string& keyPath, const std::string& name, std::string& value,
                         std::uint32_t selection) const;

  // Make the key when it is not there.
  virtual bool setString(const std::string& keyPath, const std::string& name, const std::string& value,
                         std::uint32_t selection) const;
  virtual bool setLong(const std::string& keyPath, const std::string& name, std::uint32_t value,
                       std::uint32_t selection) const;

  virtual bool getValueNames(const std::string& keyPath, std::vector<std::string>& names,
                             std::uint32_t selection) const;

  // Lends the values of the key, in the order of writing and in one consistent view, to `reader`. It must not
  // call the registry, and therefore not log.
  using ValueReader =
      std::function<void(std::string_view name, platform::registry::ValueType, std::string_view data)>;
  bool forEachValue(const std::string& keyPath, const ValueReader& reader, std::uint32_t selection) const;

  // Deletes the key with everything below it. Throws Win32Exception when it cannot be opened.
  virtual bool deleteKey(const std::string& keyPath, std::uint32_t selection) const;
  virtual bool deleteValue(const std::string& keyPath, const std::string& name,
                           std::uint32_t selection) const;

  // Deletes the branch of the local id and, when no other local id has one, the root; true when the root
  // went.
  virtual bool removeAll();

  virtual void fullPath(std::string& path, std::uint32_t selection) const;

 protected:
  std::string rootPath_;
  std::string localId_;

 private:
  std::string keyPathOf(const std::string& keyPath, std::uint32_t selection) const;

  template <typename Value>
  bool readOrDefault(const std::string& keyPath, const std::string& name, Value& value,
                     const Value& defaultValue, std::uint32_t selection) const;
  template <typename Value>
  bool read(const std::string& keyPath, const std::string& name, Value& value, std::uint32_t selection) const;
  template <typename Value>
  bool write(const std::string& keyPath, const std::string& name, const Value& value,
             std::uint32_t selection) const;
};

}  // namespace qvn
