// What a device says of itself, where it goes into an attribute text.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace qvn::shared {

inline constexpr std::size_t kMaxPlainText = 63;

// Printable ASCII, of which nothing can end or begin an element.
inline bool isPlainText(std::string_view text) {
  return !text.empty() && text.size() <= kMaxPlainText && std::all_of(text.begin(), text.end(), [](char c) {
    return c >= ' ' && c <= '~' && c != '<' && c != '>';
  });
}

}  // namespace qvn::shared
