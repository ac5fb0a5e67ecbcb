// What cutting a byte stream into messages has in common, whatever the messages are.
#pragma once

#include "bytes.h"

namespace sim {

class StreamAssembler {
 public:
  void add(ByteView bytes) { pending_.insert(pending_.end(), bytes.begin(), bytes.end()); }

  // Whether the start of a message is waiting for its rest, once there is no complete one any more.
  bool isPartial() const { return !pending_.empty(); }

  // Gives up the message begun: its first byte was no start of one after all.
  void giveUpPartial() {
    if (!pending_.empty()) pending_.erase(pending_.begin());
  }

 protected:
  Bytes pending_;
};

}  // namespace sim
