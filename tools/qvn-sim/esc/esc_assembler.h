// Cuts the byte stream of a scan connection into ESC commands and finds its way back after garbage.
#pragma once

#include <optional>

#include "base/bytes.h"
#include "base/stream_assembler.h"

namespace sim {

class EscAssembler : public StreamAssembler {
 public:
  // The next complete command, header and payload. Bytes that cannot begin one are skipped.
  std::optional<Bytes> next();
};

}  // namespace sim
