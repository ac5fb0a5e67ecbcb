// DeviceIdentity: what an enumeration asks of each stored device.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace qvn {

struct DeviceIdentity {
  std::optional<std::uint32_t> handle;
  std::optional<std::string_view> transport;  // part of the text

  // Reads the attributes Handle and Transport in one pass, since an enumeration does so for thousands of
  // texts. As AttributeCodec would read them.
  static DeviceIdentity of(std::string_view text);
};

}  // namespace qvn
