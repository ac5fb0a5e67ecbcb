// Cuts the byte stream of a scan connection into ESC commands and finds its way back after garbage.
#pragma once

#include <optional>

#include "bytes.h"

namespace sim {

class EscAssembler {
 public:
  void add(ByteView bytes);

  // The next complete command, header and payload. Bytes that cannot begin one are skipped.
  std::optional<Bytes> next();

  // Whether the start of a command is waiting for its rest.
  bool isPartial() const { return !pending_.empty(); }

  // Gives up the command begun: its first byte was no escape byte after all.
  void giveUpPartial();

 private:
  Bytes pending_;
};

}  // namespace sim
