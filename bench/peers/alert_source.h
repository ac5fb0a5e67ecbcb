// A device that does nothing but raise alerts, in a process of its own. Each alert says when it was sent.
#pragma once

#include <cstdint>
#include <span>

#include "peers/forked_peer.h"

namespace qvn::bench {

class AlertSource {
 public:
  // Made before the process has threads: the source is a fork of it.
  AlertSource();

  std::uint16_t port() const { return peer_.port(); }

  // Sends an alert to the connection that was made as the nth, from 0 on.
  void raise(std::uint32_t connection);

  // The length of its alerts, and the nanoseconds of the monotonic clock at which one was sent.
  static constexpr std::size_t kAlertSize = 19;
  static std::uint64_t sentAt(std::span<const std::uint8_t> alert);

 private:
  const ForkedPeer peer_;
};

}  // namespace qvn::bench
