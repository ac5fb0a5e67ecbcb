// Cuts the byte stream of a bidi connection into packets and finds its way back after garbage.
#pragma once

#include <optional>

#include "base/bytes.h"
#include "base/stream_assembler.h"

namespace sim {

class PacketAssembler : public StreamAssembler {
 public:
  // The next complete packet. Bytes that cannot begin one (not A5, a length that no packet has) are skipped.
  std::optional<Bytes> next();
};

}  // namespace sim
