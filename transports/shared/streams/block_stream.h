// The blocks in the byte stream of a Bpd scanner's scan port, both ways: a header of 8 bytes and a payload.
//
//   42 4B kind 00 length      the length of the payload, 32 bits, big-endian, at most 131072
//   kind 01                   the payload is one XML document or data block
//   kind 02, device to host   a read that failed; the payload is its code, 32 bits, big-endian
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "shared/streams/receive_buffer.h"

namespace qvn::shared {

inline constexpr std::size_t kBlockHeaderLength = 8;
inline constexpr std::size_t kMaxBlockPayload = 131072;

// Of a payload that is not longer than the longest.
std::array<std::uint8_t, kBlockHeaderLength> blockHeader(std::size_t payloadLength);

struct Block {
  std::span<const std::uint8_t> bytes;  // in the buffer
  std::uint32_t code;                   // of a failed read, which has no bytes
};

// A block takes as long as it takes: what has begun is never given up.
class BlockStream : public ReceiveBuffer {
 public:
  using Item = Block;

  // The next whole block; none behind a wrong header.
  std::optional<Block> next();

  // A header was wrong: there is no way to find the next one.
  bool isBroken() const { return isBroken_; }

 private:
  bool isBroken_ = false;
};

}  // namespace qvn::shared
