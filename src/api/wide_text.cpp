#include "api/wide_text.h"

#include <cstdlib>
#include <vector>

namespace qvn {
namespace {

constexpr char32_t kFirstBeyond16Bits = 0x10000;
constexpr char32_t kHighSurrogates = 0xD800;
constexpr char32_t kLowSurrogates = 0xDC00;

void append(std::u16string& wide, char32_t character) {
  if (character < kFirstBeyond16Bits) {
    wide.push_back(static_cast<char16_t>(character));
    return;
  }
  const char32_t rest = character - kFirstBeyond16Bits;
  wide.push_back(static_cast<char16_t>(kHighSurrogates + (rest >> 10)));
  wide.push_back(static_cast<char16_t>(kLowSurrogates + (rest & 0x3FF)));
}

}  // namespace

std::u16string toWideText(const std::string& text) {
  std::u16string wide;
  std::vector<wchar_t> characters(text.size() + 1);
  const std::size_t count = std::mbstowcs(characters.data(), text.c_str(), characters.size());
  if (count == static_cast<std::size_t>(-1)) {
    for (const char byte : text) wide.push_back(static_cast<unsigned char>(byte));
  } else {
    for (std::size_t i = 0; i < count; ++i) append(wide, static_cast<char32_t>(characters[i]));
  }
  return wide;
}

}  // namespace qvn
