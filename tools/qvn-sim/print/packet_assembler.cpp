#include "print/packet_assembler.h"

#include <algorithm>

#include "print/npa_packets.h"

namespace sim {

std::optional<Bytes> PacketAssembler::next() {
  auto start = pending_.begin();
  std::optional<Bytes> packet;
  while ((start = std::find(start, pending_.end(), npa::kStartOfPacket)) != pending_.end()) {
    const ByteView rest(start, pending_.end());
    if (rest.size() < npa::kUncounted) break;
    const std::size_t total = npa::readBig16(rest, 1) + npa::kUncounted;
    if (total < npa::kShortestPacket || total > npa::kLongestPacket) {
      ++start;
      continue;
    }
    if (rest.size() >= total) {
      packet.emplace(start, start + static_cast<std::ptrdiff_t>(total));
      start += static_cast<std::ptrdiff_t>(total);
    }
    break;
  }
  pending_.erase(pending_.begin(), start);
  return packet;
}

}  // namespace sim
