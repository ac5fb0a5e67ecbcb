// A scanner that sends its one page as fast as the socket takes it, from blocks made beforehand, in a process
// of its own.
#pragma once

#include <array>
#include <cstdint>

#include "peers/forked_peer.h"

namespace qvn::bench {

class ScanSource {
 public:
  // Made before the process has threads: the source is a fork of it.
  ScanSource();

  std::uint16_t port() const { return peer_.port(); }

  // An A4 page in colour at 1200 dpi, in blocks as a simulated device sends them.
  static constexpr std::uint64_t kPageSize = std::uint64_t{9921} * 14031 * 3;
  static constexpr std::uint64_t kPayload = 32768;
  static constexpr std::uint64_t kBlocks = (kPageSize + kPayload - 1) / kPayload;

  // Asks for the page, which ends with a status. Every other command of 8 bytes is answered by one.
  static constexpr std::array<std::uint8_t, 8> kGo = {0x1B, 'S', 'G'};
  static constexpr std::array<std::uint8_t, 8> kStatus = {0x1B, 'S', 'S'};

 private:
  const ForkedPeer peer_;
};

}  // namespace qvn::bench
