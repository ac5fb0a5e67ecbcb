#include "shared/client/text_values.h"

#include <algorithm>
#include <charconv>
#include <numeric>
#include <utility>

namespace qvn::cli {

namespace {

// How many letters must be put in, left out, changed or exchanged with their neighbour to make one of the
// other.
std::size_t distance(const std::string& one, const std::string& other) {
  std::vector<std::size_t> before;
  std::vector<std::size_t> row(other.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= one.size(); ++i) {
    std::vector<std::size_t> next(other.size() + 1, i);
    for (std::size_t j = 1; j <= other.size(); ++j) {
      const bool same = one[i - 1] == other[j - 1];
      next[j] = std::min({row[j] + 1, next[j - 1] + 1, row[j - 1] + (same ? 0 : 1)});
      const bool exchanged = i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1];
      if (exchanged) next[j] = std::min(next[j], before[j - 2] + 1);
    }
    before = std::exchange(row, next);
  }
  return row.back();
}

}  // namespace

std::optional<std::uint32_t> parseNumber(std::string_view text) {
  int base = 10;
  if (text.starts_with("0x") || text.starts_with("0X")) {
    base = 16;
    text.remove_prefix(2);
  }
  std::uint32_t value = 0;
  const char* end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, value, base);
  if (error != std::errc() || stopped != end) {
    return std::nullopt;
  }
  return value;
}

std::optional<std::string> parseHex(std::string_view text) {
  std::string bytes;
  std::size_t at = 0;
  while (at < text.size()) {
    if (std::string_view(" \t,:-").find(text[at]) != std::string_view::npos) {
      ++at;
      continue;
    }
    std::uint8_t byte = 0;
    const char* end = text.data() + std::min(at + 2, text.size());
    const auto [stopped, error] = std::from_chars(text.data() + at, end, byte, 16);
    if (error != std::errc() || stopped != text.data() + at + 2) {
      return std::nullopt;
    }
    bytes.push_back(static_cast<char>(byte));
    at += 2;
  }
  return bytes;
}

std::string formatHex(std::string_view bytes, std::string_view separator) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const char character : bytes) {
    if (!text.empty()) {
      text += separator;
    }
    const auto byte = static_cast<unsigned char>(character);
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0x0F];
  }
  return text;
}

std::string formatHex(std::span<const std::uint8_t> bytes, std::string_view separator) {
  return formatHex(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()), separator);
}

std::string didYouMean(const std::string& mistyped, const std::vector<std::string>& words) {
  const auto nearer = [&](const std::string& one, const std::string& other) {
    return distance(mistyped, one) < distance(mistyped, other);
  };
  const auto found = std::min_element(words.begin(), words.end(), nearer);
  const bool isNear =
      found != words.end() && distance(mistyped, *found) <= std::max<std::size_t>(1, mistyped.size() / 3);
  return isNear ? "; did you mean '" + *found + "'?" : "";
}

}  // namespace qvn::cli
