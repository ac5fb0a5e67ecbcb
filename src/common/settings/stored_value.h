// How the types that settings have are kept in the registry.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "common/text.h"
#include "platform/registry/registry.h"
#include "qvn/transport/data.h"

namespace qvn {

// type, encode, and decode, which is false for bytes that are no such value.
template <typename Value>
struct StoredValue;

template <>
struct StoredValue<std::uint32_t> {
  static constexpr auto type = platform::registry::ValueType::Dword;
  static std::string encode(std::uint32_t value) { return platform::registry::dwordBytes(value); }
  static bool decode(std::string_view bytes, std::uint32_t& value) {
    const auto number = platform::registry::dwordOf(type, bytes);
    value = number.value_or(value);
    return number.has_value();
  }
};

template <>
struct StoredValue<std::string> {
  static constexpr auto type = platform::registry::ValueType::String;
  static const std::string& encode(const std::string& value) { return value; }
  static bool decode(std::string_view bytes, std::string& value) {
    value = bytes;
    return true;
  }
};

template <>
struct StoredValue<Data> {
  static constexpr auto type = platform::registry::ValueType::Binary;
  static std::string encode(const Data& value) { return std::string(bytesAsText(value)); }
  static bool decode(std::string_view bytes, Data& value) {
    value = Data(bytes);
    return true;
  }
};

}  // namespace qvn
