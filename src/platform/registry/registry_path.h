// How the registry's keys, values and identifiers are named in the store: one ordered map from bytes to
// bytes.
//
//   'F'                                     the version of this format
//   'K' hive ('\0' component)...            a key, by its path; components in lower case
//   'I' id                                  an existing key's 'K' name, by its identifier
//   'V' id value-name                       a value; the name in lower case
//
// Identifiers are eight bytes, most significant first. '\0' sorts below every byte of a component, so the
// keys below a key follow it without a gap, and its direct subkeys come in the order of their names.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "platform/base/error.h"
#include "platform/registry/registry.h"

namespace qvn::platform::registry {

// A name in the store, built in place: most operations need no other memory.
class StoreName {
 public:
  // The longest name that the store takes.
  static constexpr std::size_t kCapacity = 511;

  static StoreName format();
  static StoreName root(Hive hive);
  static StoreName identifier(std::uint64_t id);
  static StoreName valuesOf(std::uint64_t id);

  // A copy of `bytes`, which the store gave.
  static StoreName copyOf(std::string_view bytes);

  // Goes down a path from a key. Empty components are ignored; 87 when one is too long or holds a zero byte,
  // 206 when the whole gets too long, and the name is of no use then.
  ErrorCode appendPath(std::string_view path);

  // Completes valuesOf to the name of one value. 87 when the name is empty, too long or holds a zero byte.
  ErrorCode appendValueName(std::string_view name);

  // Turns a key into the start of all names below it.
  void appendSeparator();

  // The start of all names after those that start with this one: its last byte is one more.
  void skipPrefix();

  std::string_view bytes() const { return {bytes_.data(), size_}; }

 private:
  void append(char byte) { bytes_[size_++] = byte; }
  void appendNumber(std::uint64_t number);

  std::array<char, kCapacity> bytes_;  // Only the first size_ are ever read.
  std::size_t size_ = 0;
};

// Takes the first component, which is not empty, off the front of a path; empty at the path's end.
std::string_view takeComponent(std::string_view& path);

}  // namespace qvn::platform::registry
