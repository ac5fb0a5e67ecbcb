#include "bidi/element/base64.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace qvn::test {
namespace {

std::vector<std::uint8_t> bytesOf(std::string_view text) { return {text.begin(), text.end()}; }

std::string decoded(std::string_view text, std::size_t maxLength = 1000) {
  const std::vector<std::uint8_t> bytes = decodeBase64(text, maxLength);
  return {bytes.begin(), bytes.end()};
}

TEST(Base64, EncodesAsTheStandardSays) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"", ""},
      {"f", "Zg=="},
      {"fo", "Zm8="},
      {"foo", "Zm9v"},
      {"foob", "Zm9vYg=="},
      {"fooba", "Zm9vYmE="},
      {"foobar", "Zm9vYmFy"},
      {"\xFF", "/w=="},
      {"\xFB\xEF\xBE", "++++"},
      {std::string_view("\0\0\0\0", 4), "AAAAAA=="}};
  for (const auto& [bytes, text] : cases) {
    EXPECT_EQ(encodeBase64(bytesOf(bytes)), text);
    EXPECT_EQ(decoded(text), bytes);
  }
}

TEST(Base64, DecodesWhatIsThere) {
  const std::tuple<const char*, std::string_view, std::string_view> cases[] = {
      {"line breaks", "Zm9v\r\nYmFy\r\n", "foobar"},
      {"a stray in a group", "Z m-9\nv", "foo"},
      {"characters above 127", "Zm\xC3\xA4\x39v\x80", "foo"},
      {"a NUL", std::string_view("Zm\0009v", 5), "foo"},
      {"a stray, then clean groups", "Zm9-vYmFyZm9v", "foobarfoo"},
      {"nothing but strays", "-_.\xFF", ""},
      {"an incomplete group", "Zm9vYmF", "foo"},
      {"nothing after a pad", "Zg==Zm9v", "f"},
      {"a pad early in a group", "Z=8=", "d"},
      {"a pad in front", "=m9v", std::string_view("\x02\x6F", 2)},
      {"three pads", "Z===", ""},
      {"four pads", "====Zm9v", ""},
      {"an incomplete group with a pad", "Zm9vZg=", "foo"},
      {"a stray between pads", "Zg=\n=", "f"},
  };
  for (const auto& [what, text, bytes] : cases) EXPECT_EQ(decoded(text), bytes) << what;
}

TEST(Base64, GivesNoMoreThanAskedFor) {
  for (std::size_t length = 0; length <= 7; ++length) {
    EXPECT_EQ(decoded("Zm9vYmFy", length), std::string("foobar").substr(0, length));
  }
}

}  // namespace
}  // namespace qvn::test
