// A value in a document of a BpdPrinter's scanner: a list, a map, or a single value.
#pragma once

#include <charconv>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sim {

struct Element {
  enum class Kind : std::uint8_t { List, Map, Integer, Double, String, Boolean, Binary, Null };

  Kind kind = Kind::Null;
  std::string name;               // of a map's child
  std::string text;               // of a single value
  std::vector<Element> children;  // of a list or map

  static Element integer(std::int32_t value) { return {Kind::Integer, {}, std::to_string(value), {}}; }
  static Element string(std::string value) { return {Kind::String, {}, std::move(value), {}}; }
  // A map of strings.
  static Element map(std::initializer_list<std::pair<const char*, std::string>> entries) {
    Element map{Kind::Map, {}, {}, {}};
    for (const auto& [name, text] : entries) map.children.push_back({Kind::String, name, text, {}});
    return map;
  }

  bool isEmptyList() const { return kind == Kind::List && children.empty(); }

  // The number that its text is, if that is one.
  std::optional<std::int32_t> number() const {
    std::int32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
  }
};

// The tags of the kinds, in their order.
inline constexpr std::string_view kElementTags[] = {"ListElem",   "MapElem",     "IntegerElem", "DoubleElem",
                                                    "StringElem", "BooleanElem", "BinaryElem",  "NullElem"};

}  // namespace sim
