// LogText: the text of a log line, put together piece by piece.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "qvn/transport/data.h"

namespace qvn {

class LogText {
 public:
  LogText() = default;

  LogText& operator<<(std::string_view text) {
    text_ += text;
    return *this;
  }
  LogText& operator<<(const char* text) { return *this << std::string_view(text == nullptr ? "" : text); }
  LogText& operator<<(const std::string& text) { return *this << std::string_view(text); }
  // Decimal.
  LogText& operator<<(std::uint32_t number) { return *this << std::to_string(number); }
  LogText& operator<<(std::int32_t number) { return *this << std::to_string(number); }
  // "true" or "false".
  LogText& operator<<(bool value) { return *this << (value ? "true" : "false"); }
  // "0x" and at least eight hexadecimal digits.
  LogText& operator<<(const void* pointer);

  // Lower-case digits of a radix from 2 to 36.
  LogText& radix(std::uint32_t number, int radix);
  // Two upper-case hexadecimal digits a byte, nothing between them; nothing for a null array.
  LogText& hex(const void* bytes, std::size_t length);
  LogText& hex(const Data& data) { return hex(data.getBuffer(), data.getLength()); }
  // The four bytes of a mask in memory order, each as two lower-case hexadecimal digits and a blank.
  LogText& maskBytes(std::uint32_t mask);

  const std::string& str() const { return text_; }

 private:
  std::string text_;
};

}  // namespace qvn
