// A HID that sends reports when told to, in a process of its own. Each report says when it was sent.
#pragma once

#include <cstdint>
#include <span>

#include "peers/forked_peer.h"

namespace qvn::bench {

class HidSource {
 public:
  // Made before the process has threads: the source is a fork of it.
  HidSource();

  std::uint16_t port() const { return peer_.port(); }

  // Sends so many reports, each by itself, to the connection that was made as the nth, from 0 on.
  void send(std::uint32_t connection, std::uint32_t reports) const;

  // A report is its number, from 0 on for each call of send, and the nanoseconds of the monotonic clock.
  struct Report {
    std::uint32_t number;
    std::uint64_t sentAt;
  };
  static constexpr std::size_t kReportSize = 12;
  static constexpr std::size_t kFrameHeader = 3;
  static Report parse(std::span<const std::uint8_t> report);

 private:
  const ForkedPeer peer_;
};

}  // namespace qvn::bench
