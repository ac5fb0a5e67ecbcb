#include "shared/client/text_values.h"

#include <charconv>

namespace qvn::cli {

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

}  // namespace qvn::cli
