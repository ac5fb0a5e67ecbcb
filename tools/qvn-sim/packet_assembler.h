// Cuts the byte stream of a bidi connection into packets and finds its way back after garbage.
#pragma once

#include <cstddef>
#include <optional>

#include "bytes.h"

namespace sim {

class PacketAssembler {
 public:
  void add(ByteView bytes);

  // The next complete packet. Bytes that cannot begin one (not A5, a length that no packet has) are skipped.
  std::optional<Bytes> next();

  // Whether the start of a packet is waiting for its rest.
  bool isPartial() const { return !pending_.empty(); }

  // Gives up the packet begun: its first byte was no start of packet after all.
  void giveUpPartial();

 private:
  Bytes pending_;
};

}  // namespace sim
