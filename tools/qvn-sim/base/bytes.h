// Bytes as the simulator passes them around, and their hexadecimal form.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

std::string toHex(ByteView bytes);

// Pairs of hexadecimal digits, with or without blanks between them; nothing when it is anything else.
std::optional<Bytes> fromHex(std::string_view text);

}  // namespace sim
