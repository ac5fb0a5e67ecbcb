#include "bidi/object_store/reply_frame.h"

#include <cstddef>
#include <cstdint>
#include <optional>

#include "common/byte_reader.h"

namespace qvn {
namespace {

constexpr std::size_t kLengthOffset = 4;
constexpr std::size_t kHeaderLength = 8;

bool beginsFrame(std::uint8_t byte) {
  return byte == 0xAA || byte == 0xBB || byte == 0xCC || byte == 0xDD || byte == 0xEE || byte == 0xFF;
}

}  // namespace

std::string_view unwrapReply(std::string_view reply) {
  const ByteReader reader(reinterpret_cast<const std::uint8_t*>(reply.data()), reply.size());
  const std::optional<std::uint16_t> high = reader.u16(kLengthOffset);
  const std::optional<std::uint16_t> low = reader.u16(kLengthOffset + 2);
  if (!high || !low || !beginsFrame(*reader.u8(0))) return reply;
  return reply.substr(kHeaderLength, static_cast<std::size_t>(*high) << 16 | *low);
}

}  // namespace qvn
