#include "platform/registry/registry_path.h"

#include <algorithm>
#include <cstring>

namespace qvn::platform::registry {
namespace {

constexpr char kSeparator = '\0';
constexpr std::size_t kPrefixSize = 2;  // tag and hive
static_assert(kPrefixSize + 1 + kMaxPath + 1 <= StoreName::kCapacity);
static_assert(1 + sizeof(std::uint64_t) + kMaxName <= StoreName::kCapacity);

constexpr char lowerCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

StoreName StoreName::format() {
  StoreName name;
  name.append('F');
  return name;
}

StoreName StoreName::root(Hive hive) {
  StoreName name;
  name.append('K');
  name.append(static_cast<char>(hive));
  return name;
}

StoreName StoreName::identifier(std::uint64_t id) {
  StoreName name;
  name.append('I');
  name.appendNumber(id);
  return name;
}

StoreName StoreName::valuesOf(std::uint64_t id) {
  StoreName name;
  name.append('V');
  name.appendNumber(id);
  return name;
}

StoreName StoreName::copyOf(std::string_view bytes) {
  StoreName name;
  name.size_ = std::min(bytes.size(), kCapacity);
  std::memcpy(name.bytes_.data(), bytes.data(), name.size_);
  return name;
}

// One pass over the text: the library opens a key for every line that it may have to log.
ErrorCode StoreName::appendPath(std::string_view path) {
  char* const begin = bytes_.data();
  // The first component has no separator in the caller's spelling of the path.
  const char* const limit = begin + kPrefixSize + 1 + kMaxPath;
  char* out = begin + size_;
  std::size_t componentSize = 0;
  for (const char c : path) {
    if (c == '\\') {
      componentSize = 0;
      continue;
    }
    if (c == '\0' || componentSize == kMaxName) return kInvalidParameter;
    if (limit - out < (componentSize == 0 ? 2 : 1)) return kNameTooLong;
    if (componentSize++ == 0) *out++ = kSeparator;
    *out++ = lowerCase(c);
  }
  size_ = static_cast<std::size_t>(out - begin);
  return kSuccess;
}

ErrorCode StoreName::appendValueName(std::string_view name) {
  const bool hasZero = name.find('\0') != std::string_view::npos;
  if (name.empty() || name.size() > kMaxName || hasZero) return kInvalidParameter;
  for (const char c : name) append(lowerCase(c));
  return kSuccess;
}

void StoreName::appendSeparator() { append(kSeparator); }

void StoreName::skipPrefix() { ++bytes_[size_ - 1]; }

void StoreName::appendNumber(std::uint64_t number) {
  for (int shift = 56; shift >= 0; shift -= 8) append(static_cast<char>(number >> shift & 0xFF));
}

std::string_view takeComponent(std::string_view& path) {
  path.remove_prefix(std::min(path.find_first_not_of('\\'), path.size()));
  const std::string_view component = path.substr(0, path.find('\\'));
  path.remove_prefix(component.size());
  return component;
}

}  // namespace qvn::platform::registry
