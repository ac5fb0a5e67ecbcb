#include "platform/registry/registry_record.h"

#include <cstring>

namespace qvn::platform::registry {
namespace {

constexpr std::uint8_t kEveryone = 1;
constexpr std::uint8_t kInheritable = 2;

template <typename Number>
void append(std::string& bytes, Number number) {
  bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
}

// Takes a number off the front; false when there are too few bytes.
template <typename Number>
bool take(std::string_view& bytes, Number& number) {
  if (bytes.size() < sizeof number) return false;
  std::memcpy(&number, bytes.data(), sizeof number);
  bytes.remove_prefix(sizeof number);
  return true;
}

}  // namespace

std::string KeyRecord::encode() const {
  std::string bytes;
  append(bytes, id);
  append(bytes, owner);
  append(bytes, static_cast<std::uint8_t>((access.everyone ? kEveryone : 0) |
                                          (access.inheritable ? kInheritable : 0)));
  bytes.append(name);
  return bytes;
}

ErrorCode KeyRecord::decode(std::string_view bytes, KeyRecord& record) {
  std::uint8_t flags = 0;
  if (!take(bytes, record.id) || !take(bytes, record.owner) || !take(bytes, flags)) return kRegistryCorrupt;
  record.access = {.everyone = (flags & kEveryone) != 0, .inheritable = (flags & kInheritable) != 0};
  record.name = bytes;
  return kSuccess;
}

std::string ValueRecord::encode() const {
  std::string bytes;
  bytes.reserve(sizeof sequence + sizeof type + sizeof(std::uint16_t) + name.size() + data.size());
  append(bytes, sequence);
  append(bytes, static_cast<std::uint32_t>(type));
  append(bytes, static_cast<std::uint16_t>(name.size()));
  bytes.append(name).append(data);
  return bytes;
}

ErrorCode ValueRecord::decode(std::string_view bytes, ValueRecord& record) {
  std::uint32_t type = 0;
  std::uint16_t nameSize = 0;
  if (!take(bytes, record.sequence) || !take(bytes, type) || !take(bytes, nameSize)) return kRegistryCorrupt;
  if (bytes.size() < nameSize) return kRegistryCorrupt;
  record.type = static_cast<ValueType>(type);
  record.name = bytes.substr(0, nameSize);
  record.data = bytes.substr(nameSize);
  return kSuccess;
}

}  // namespace qvn::platform::registry
