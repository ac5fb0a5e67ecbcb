#include "common/logging/log_text.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <cstring>

namespace qvn {

LogText& LogText::operator<<(const void* pointer) {
  std::array<char, 24> buffer{};
  const auto value = reinterpret_cast<std::uintptr_t>(pointer);
  std::snprintf(buffer.data(), buffer.size(), "0x%08llx", static_cast<unsigned long long>(value));
  return *this << buffer.data();
}

LogText& LogText::radix(std::uint32_t number, int radix) {
  std::array<char, 33> buffer{};
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, radix);
  text_.append(buffer.data(), result.ptr);
  return *this;
}

LogText& LogText::hex(const void* bytes, std::size_t length) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  if (bytes == nullptr) return *this;
  const auto* byte = static_cast<const std::uint8_t*>(bytes);
  text_.reserve(text_.size() + 2 * length);
  for (std::size_t i = 0; i < length; ++i) {
    text_.push_back(kDigits[byte[i] >> 4]);
    text_.push_back(kDigits[byte[i] & 0x0F]);
  }
  return *this;
}

LogText& LogText::maskBytes(std::uint32_t mask) {
  std::array<std::uint8_t, sizeof mask> bytes{};
  std::memcpy(bytes.data(), &mask, sizeof mask);
  for (const std::uint8_t byte : bytes) {
    std::array<char, 4> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "%02x ", byte);
    *this << buffer.data();
  }
  return *this;
}

}  // namespace qvn
