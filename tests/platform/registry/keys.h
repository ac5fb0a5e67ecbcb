// Keys and values for the tests of the registry.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "platform/registry/registry.h"

namespace qvn::platform::registry {

inline constexpr Access kEveryone{.everyone = true, .inheritable = true};

inline ErrorCode make(std::string_view path, Key& key) {
  return createKey(Hive::LocalMachine, path, kEveryone, key);
}

inline Key made(std::string_view path) {
  Key key;
  EXPECT_EQ(make(path, key), kSuccess) << path;
  return key;
}

inline ErrorCode setString(const Key& key, std::string_view name, std::string_view text) {
  return setValue(key, name, ValueType::String, text);
}

// Unlike any text that is stored when there is none.
inline std::string stringOf(const Key& key, std::string_view name) {
  Value value;
  const ErrorCode error = getValue(key, name, value);
  return error == kSuccess && value.type == ValueType::String ? value.data : "error " + std::to_string(error);
}

}  // namespace qvn::platform::registry
