// The packets in the byte stream of a device's bidi port (IEEE 1284.1 framing: A5, the number of bytes that
// follow as 16 bits, big-endian, flags, command), and what can be told from a packet's first bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "shared/streams/receive_buffer.h"

namespace qvn::shared {

using Packet = std::vector<std::uint8_t>;
using PacketView = std::span<const std::uint8_t>;

inline constexpr std::uint8_t kStartOfPacket = 0xA5;

// A packet that may be sent: complete, with the length that it says.
bool isWellFormed(PacketView packet);

// Sent by the device unasked.
bool isAlert(PacketView packet);

// What a reply must have in common with its request: command, sub-command when it has one, and for the
// command 0xE0 the byte that tells its many uses apart.
bool answers(PacketView reply, PacketView request);

// A request whose effect ends with its connection: the registration for a kind of alerts. Two requests with
// the same `lastingEffect` replace each other; empty for all others.
PacketView lastingEffect(PacketView request);

class NpaStream : public ReceiveBuffer {
 public:
  using Item = PacketView;

  // The next complete packet, in the buffer. Bytes that cannot begin a packet are skipped.
  std::optional<PacketView> next();

  // Takes the packet that has begun for garbage and looks for the next start behind its first byte.
  void giveUpPartial() { drop(1); }
};

}  // namespace qvn::shared
