#include "shared/streams/esc_stream.h"

#include <algorithm>

namespace qvn::shared {

std::optional<esc::Bytes> EscStream::next() {
  for (;;) {
    const esc::Bytes unread = bytes();
    const auto start = std::find(unread.begin(), unread.end(), esc::kEscape);
    if (start != unread.begin()) {
      inStep_ = false;
      drop(static_cast<std::size_t>(start - unread.begin()));
    }
    const esc::Bytes command = bytes();
    if (command.size() < esc::kHeaderLength) return std::nullopt;
    if (!inStep_ && esc::find(command) == nullptr) {
      drop(1);
      continue;
    }
    const std::size_t length = esc::commandLength(command);
    if (command.size() < length) return std::nullopt;
    inStep_ = true;
    drop(length);
    return command.first(length);
  }
}

void EscStream::giveUpPartial() {
  inStep_ = false;
  drop(std::min(bytes().size(), esc::kHeaderLength));
}

}  // namespace qvn::shared
