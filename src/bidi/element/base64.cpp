#include "bidi/element/base64.h"

#include <algorithm>
#include <array>

namespace qvn {
namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kPad = '=';

// Above any value of six bits.
constexpr std::uint8_t kStray = 0x80;

constexpr std::array<std::uint8_t, 256> kValues = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(kStray);
  for (std::size_t i = 0; i < kAlphabet.size(); ++i) {
    values[static_cast<std::uint8_t>(kAlphabet[i])] = static_cast<std::uint8_t>(i);
  }
  return values;
}();

std::uint32_t valueOf(char c) { return kValues[static_cast<std::uint8_t>(c)]; }

// The four characters of three bytes.
void encodeGroup(std::uint32_t group, char* out) {
  out[0] = kAlphabet[group >> 18];
  out[1] = kAlphabet[group >> 12 & 0x3F];
  out[2] = kAlphabet[group >> 6 & 0x3F];
  out[3] = kAlphabet[group & 0x3F];
}

// The text read group by group into a buffer with room for all that it can give.
class Decoder {
 public:
  Decoder(std::string_view text, std::uint8_t* out) : text_(text), out_(out) {}

  std::size_t decode() {
    do {
      decodeCleanGroups();
    } while (decodeGroup());
    return written_;
  }

 private:
  // Groups of nothing but characters of the alphabet: nearly all there are.
  void decodeCleanGroups() {
    while (text_.size() - position_ >= 4) {
      const char* in = text_.data() + position_;
      const std::uint32_t a = valueOf(in[0]);
      const std::uint32_t b = valueOf(in[1]);
      const std::uint32_t c = valueOf(in[2]);
      const std::uint32_t d = valueOf(in[3]);
      if (((a | b | c | d) & kStray) != 0) return;
      write(a << 18 | b << 12 | c << 6 | d, 3);
      position_ += 4;
    }
  }

  // One group in full. False when it was the last: it had a pad, or the text ended in it.
  bool decodeGroup() {
    std::uint32_t group = 0;
    std::size_t pads = 0;
    for (int counted = 0; counted < 4; ++position_) {
      if (position_ == text_.size()) return false;
      const char c = text_[position_];
      const std::uint32_t value = c == kPad ? 0 : valueOf(c);
      if (value == kStray) continue;
      if (c == kPad) ++pads;
      group = group << 6 | value;
      ++counted;
    }
    write(group, 3 - std::min<std::size_t>(pads, 3));
    return pads == 0;
  }

  void write(std::uint32_t group, std::size_t count) {
    std::uint8_t* out = out_ + written_;
    if (count > 0) out[0] = static_cast<std::uint8_t>(group >> 16);
    if (count > 1) out[1] = static_cast<std::uint8_t>(group >> 8);
    if (count > 2) out[2] = static_cast<std::uint8_t>(group);
    written_ += count;
  }

  std::string_view text_;
  std::uint8_t* out_;
  std::size_t position_ = 0;
  std::size_t written_ = 0;
};

}  // namespace

std::string encodeBase64(std::span<const std::uint8_t> bytes) {
  std::string text((bytes.size() + 2) / 3 * 4, kPad);
  char* out = text.data();
  std::size_t i = 0;
  for (; bytes.size() - i >= 3; i += 3, out += 4) {
    encodeGroup(std::uint32_t{bytes[i]} << 16 | std::uint32_t{bytes[i + 1]} << 8 | bytes[i + 2], out);
  }
  if (const std::size_t rest = bytes.size() - i; rest != 0) {
    const std::uint32_t second = rest == 2 ? bytes[i + 1] : 0;
    encodeGroup(std::uint32_t{bytes[i]} << 16 | second << 8, out);
    out[3] = kPad;
    if (rest == 1) out[2] = kPad;
  }
  return text;
}

std::vector<std::uint8_t> decodeBase64(std::string_view text, std::size_t maxLength) {
  std::vector<std::uint8_t> bytes(text.size() / 4 * 3);
  bytes.resize(std::min(Decoder(text, bytes.data()).decode(), maxLength));
  return bytes;
}

}  // namespace qvn
