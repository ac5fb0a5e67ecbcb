// A Bpd scanner that answers every document and sends its one page as fast as the socket takes it, from
// blocks made beforehand, in a process of its own.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "peers/forked_peer.h"

namespace qvn::bench {

class ObjectSource {
 public:
  // Made before the process has threads: the source is a fork of it. A silent one starts its jobs and sends
  // nothing of them.
  explicit ObjectSource(bool isSilent);

  std::uint16_t port() const { return peer_.port(); }

  // An A4 page in colour at 1200 dpi.
  static constexpr std::uint64_t kPageSize = std::uint64_t{9921} * 14031 * 3;
  static constexpr std::uint64_t kPayload = 32768;
  static constexpr std::uint64_t kBlocks = (kPageSize + kPayload - 1) / kPayload;

  static constexpr std::size_t kHeader = 8;
  // A block with that payload.
  static std::string block(std::string_view payload);
  // The length in a block's header.
  static std::size_t payloadLength(const std::uint8_t* header);

 private:
  const ForkedPeer peer_;
};

}  // namespace qvn::bench
