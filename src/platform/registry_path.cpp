#include "platform/registry_path.h"

#include <algorithm>
#include <cstring>

namespace qvn::platform::registry {
namespace {

constexpr char kSeparator = '\0';
constexpr std::size_t kPrefixSize = 2;  // tag and hive
static_assert(kPrefixSize + 1 + kMaxPath + 1 <= StoreName::kCapacity);
static_assert(1 + sizeof(std::uint64_t) + kMaxName <= StoreName::kCapacity);

constexpr char lowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isName(std::string_view text) {
  return !text.empty() && text.size() <= kMaxName && std::memchr(text.data(), '\0', text.size()) == nullptr;
}

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

ErrorCode StoreName::appendComponent(std::string_view component) {
  if (!isName(component)) return kInvalidParameter;
  // The first component has no separator in the caller's spelling of the path.
  if (size_ + 1 + component.size() > kPrefixSize + 1 + kMaxPath) return kNameTooLong;
  append(kSeparator);
  appendFolded(component);
  return kSuccess;
}

ErrorCode StoreName::appendPath(std::string_view path) {
  for (std::string_view component = takeComponent(path); !component.empty();
       component = takeComponent(path)) {
    if (const ErrorCode error = appendComponent(component); error != kSuccess) return error;
  }
  return kSuccess;
}

ErrorCode StoreName::appendValueName(std::string_view name) {
  if (!isName(name)) return kInvalidParameter;
  appendFolded(name);
  return kSuccess;
}

void StoreName::appendSeparator() {
  append(kSeparator);
}

void StoreName::skipPrefix() {
  ++bytes_[size_ - 1];
}

void StoreName::appendFolded(std::string_view text) {
  std::transform(text.begin(), text.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(size_), lowerCase);
  size_ += text.size();
}

void StoreName::appendNumber(std::uint64_t number) {
  for (int shift = 56; shift >= 0; shift -= 8) append(static_cast<char>(number >> shift & 0xFF));
}

std::string_view takeComponent(std::string_view& path) {
  const std::size_t start = std::min(path.find_first_not_of('\\'), path.size());
  path.remove_prefix(start);
  const std::size_t end = std::min(path.find('\\'), path.size());
  const std::string_view component = path.substr(0, end);
  path.remove_prefix(end);
  return component;
}

}  // namespace qvn::platform::registry
