// Cuts the byte stream of a connection to a BpdPrinter's scanner into blocks.
#pragma once

#include <optional>

#include "base/bytes.h"
#include "base/stream_assembler.h"

namespace sim {

class BlockAssembler : public StreamAssembler {
 public:
  // The next complete block, header and payload. A header that is none comes alone, and nothing of use after
  // it: where the next one begins cannot be known.
  std::optional<Bytes> next();

  // The rest of a block may take as long as it likes.
  bool isPartial() const { return false; }
};

}  // namespace sim
