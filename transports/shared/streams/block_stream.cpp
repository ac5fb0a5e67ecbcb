#include "shared/streams/block_stream.h"

#include "shared/base/big_endian.h"

namespace qvn::shared {
namespace {

constexpr std::uint8_t kMark[] = {0x42, 0x4B};
constexpr std::uint8_t kPayload = 1;
constexpr std::uint8_t kFailedRead = 2;

struct Header {
  std::uint8_t kind;
  std::size_t length;
};

// Nothing when it is none.
std::optional<Header> parseHeader(std::span<const std::uint8_t, kBlockHeaderLength> bytes) {
  const Header header{bytes[2], readBigEndian(bytes.subspan<4, kNumberLength>())};
  if (bytes[0] != kMark[0] || bytes[1] != kMark[1] || bytes[3] != 0) return std::nullopt;
  const bool isKnown = header.kind == kPayload ? header.length <= kMaxBlockPayload
                                               : header.kind == kFailedRead && header.length == kNumberLength;
  if (!isKnown) return std::nullopt;
  return header;
}

}  // namespace

std::array<std::uint8_t, kBlockHeaderLength> blockHeader(std::size_t payloadLength) {
  const auto byte = [payloadLength](int shift) { return static_cast<std::uint8_t>(payloadLength >> shift); };
  return {kMark[0], kMark[1], kPayload, 0, byte(24), byte(16), byte(8), byte(0)};
}

std::optional<Block> BlockStream::next() {
  const std::span<const std::uint8_t> unread = bytes();
  if (isBroken_ || unread.size() < kBlockHeaderLength) return std::nullopt;
  const std::optional<Header> header = parseHeader(unread.first<kBlockHeaderLength>());
  if (!header) {
    isBroken_ = true;
    return std::nullopt;
  }
  if (unread.size() - kBlockHeaderLength < header->length) return std::nullopt;
  drop(kBlockHeaderLength + header->length);
  const auto payload = unread.subspan(kBlockHeaderLength, header->length);
  if (header->kind == kPayload) return Block{payload, 0};
  return Block{{}, readBigEndian(payload.first<kNumberLength>())};
}

}  // namespace qvn::shared
