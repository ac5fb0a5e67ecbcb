// What the store holds for a key and for a value. Numbers are in the machine's own byte order: the store does
// not leave the machine.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/base/access.h"
#include "platform/base/error.h"
#include "platform/registry/registry.h"

namespace qvn::platform::registry {

// Names the kind of store and the version of its layout.
inline constexpr std::string_view kStoreFormat = "qvn registry 1";

// The root has the only identifier below those that transactions give out.
inline constexpr std::uint64_t kRootId = 1;

//   id 8 | owner 4 | access 1 | name as first written
struct KeyRecord {
  std::uint64_t id;
  std::uint32_t owner;  // the account that made it
  Access access;
  std::string_view name;  // the last component of the path; lent by what was decoded

  std::string encode() const;
  // 1015 when the bytes are no such record.
  static ErrorCode decode(std::string_view bytes, KeyRecord& record);
};

//   sequence 8 | type 4 | name size 2 | name as first written | data
struct ValueRecord {
  std::uint64_t sequence;  // greater than that of every value first written before
  ValueType type;
  std::string_view name;  // both lent by what was decoded
  std::string_view data;

  std::string encode() const;
  static ErrorCode decode(std::string_view bytes, ValueRecord& record);
};

}  // namespace qvn::platform::registry
