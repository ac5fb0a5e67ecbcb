#include "shared/streams/hid_stream.h"

namespace qvn::shared {
namespace {

constexpr std::size_t kEventLength = 8;

std::uint32_t numberAt(std::span<const std::uint8_t> bytes, std::size_t offset) {
  std::uint32_t number = 0;
  for (std::size_t i = 4; i > 0; --i) number = number << 8 | bytes[offset + i - 1];
  return number;
}

}  // namespace

std::array<std::uint8_t, kHidFrameHeader> hidFrameHeader(std::uint8_t type, std::size_t length) {
  return {type, static_cast<std::uint8_t>(length & 0xFF), static_cast<std::uint8_t>(length >> 8 & 0xFF)};
}

std::optional<HidFrame> HidStream::next() {
  const std::span<const std::uint8_t> unread = bytes();
  if (unread.size() < kHidFrameHeader) return std::nullopt;
  const std::size_t length = unread[1] | std::size_t{unread[2]} << 8;
  if (unread.size() < kHidFrameHeader + length) return std::nullopt;
  drop(kHidFrameHeader + length);
  return HidFrame{unread[0], unread.subspan(kHidFrameHeader, length)};
}

std::optional<HidEvent> parseHidEvent(std::span<const std::uint8_t> content) {
  if (content.size() != kEventLength) return std::nullopt;
  return HidEvent{.id = numberAt(content, 0), .category = numberAt(content, 4)};
}

}  // namespace qvn::shared
