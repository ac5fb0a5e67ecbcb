// The registry: a tree of keys that hold named, typed values, kept in the state directory and shared by all
// processes.
//
// Key paths separate their components with backslashes; a leading or trailing one is ignored. Keys and value
// names compare without case (ASCII) and keep the case they were first written with. Subkeys list in the byte
// order of their lower-cased names, values in the order they were first written. A write that was answered
// with 0 is on disk. Codes shared by all operations: 2 key or value not found, 87 an empty or overlong name,
// 112 the store or the disk is full (it stays readable), 206 a path longer than kMaxPath, 1015 the store is
// damaged (it is left as it is), 1016 it cannot be read or written, 1018 the key was deleted meanwhile.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/access.h"
#include "platform/base/error.h"

namespace qvn::platform::registry {

enum class Hive : std::uint8_t { LocalMachine };

enum class ValueType : std::uint32_t { String = 1, Binary = 3, Dword = 4 };

inline constexpr std::size_t kMaxPath = 480;
inline constexpr std::size_t kMaxName = 255;

// An open key: a small value, valid until the key is deleted; closing is nothing but forgetting it.
class Key {
 public:
  bool isOpen() const { return id_ != 0; }

 private:
  friend struct KeyAccess;
  std::uint64_t id_ = 0;
};

// A value as stored: a string without its terminator, a DWORD as its four bytes in little-endian order.
struct Value {
  ValueType type = ValueType::String;
  std::string data;
};

// The bytes of a DWORD, and its number; none when the value is no DWORD.
QVN_PLATFORM_API std::string dwordBytes(std::uint32_t number);
QVN_PLATFORM_API std::optional<std::uint32_t> dwordOf(ValueType type, std::string_view data);

// Another number whenever any process has changed anything: what was read before is still so while it stands.
// 0 when that cannot be told. Much cheaper than reading.
QVN_PLATFORM_API std::uint64_t changes();

QVN_PLATFORM_API ErrorCode openKey(Hive hive, std::string_view path, Key& key);

// Opens the key, making it and every missing key above it first.
QVN_PLATFORM_API ErrorCode createKey(Hive hive, std::string_view path, Access access, Key& key);

// Deletes one key with its values. 1020 when it has subkeys. `parent` need not be the direct one: `path` is
// relative to it.
QVN_PLATFORM_API ErrorCode deleteKey(const Key& parent, std::string_view path);
QVN_PLATFORM_API ErrorCode openSubkey(const Key& parent, std::string_view path, Key& key);

// Waits until everything written so far is on disk.
QVN_PLATFORM_API ErrorCode flush();

QVN_PLATFORM_API ErrorCode getValue(const Key& key, std::string_view name, Value& value);

// Lends the stored bytes to `reader` for the duration of the call, without copying them. `reader` must not
// call the registry.
QVN_PLATFORM_API ErrorCode readValue(const Key& key, std::string_view name,
                                     const std::function<void(ValueType, std::string_view)>& reader);
QVN_PLATFORM_API ErrorCode setValue(const Key& key, std::string_view name, ValueType type,
                                    std::string_view data);
QVN_PLATFORM_API ErrorCode deleteValue(const Key& key, std::string_view name);

// The names of at most `limit` subkeys.
QVN_PLATFORM_API ErrorCode listSubkeys(const Key& key, std::size_t limit, std::vector<std::string>& names);

// Every value of the key in one consistent view; `reader` gets name, type and bytes, lent for the call. It
// must not call the registry.
QVN_PLATFORM_API ErrorCode forEachValue(
    const Key& key, const std::function<void(std::string_view, ValueType, std::string_view)>& reader);

// Runs `changes` as one transaction of the calling thread: all writes that it makes through the functions
// above become visible and durable together when it answers 0, none of them otherwise. Other writers, of this
// process and others, wait. Inside another one it is a part of that one, which alone decides on all the
// writes.
QVN_PLATFORM_API ErrorCode transaction(const std::function<ErrorCode()>& changes);

// A sentence on the last failure of this process that has to do with the store itself (damaged, full, not
// accessible) rather than with a key or value: which file, and what is wrong with it. Empty when none
// occurred.
QVN_PLATFORM_API std::string lastFailure();

}  // namespace qvn::platform::registry
