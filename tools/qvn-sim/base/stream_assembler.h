// What cutting a byte stream into messages has in common, whatever the messages are.
#pragma once

#include <cstddef>
#include <optional>

#include "base/bytes.h"

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
  // The next `length` bytes, once they are all there.
  std::optional<Bytes> take(std::size_t length) {
    if (pending_.size() < length) return std::nullopt;
    const auto end = pending_.begin() + static_cast<std::ptrdiff_t>(length);
    Bytes message(pending_.begin(), end);
    pending_.erase(pending_.begin(), end);
    return message;
  }

  Bytes pending_;
};

}  // namespace sim
