#include "print/print_data_scanner.h"

#include <string.h>

#include <algorithm>
#include <utility>

namespace sim {
namespace {

// How many bytes at the end of the data begin a marker.
std::size_t markerStartAtEnd(ByteView data) {
  for (std::size_t length = std::min(data.size(), kEndOfJobMarker.size() - 1); length > 0; --length) {
    if (std::equal(data.end() - static_cast<std::ptrdiff_t>(length), data.end(), kEndOfJobMarker.begin())) {
      return length;
    }
  }
  return 0;
}

}  // namespace

PrintDataScanner::PrintDataScanner(std::function<void(ByteView)> onData, std::function<void()> onEnd)
    : onData_(std::move(onData)), onEnd_(std::move(onEnd)) {}

void PrintDataScanner::add(ByteView bytes) {
  Bytes joined;
  if (!heldBack_.empty()) {
    joined = std::exchange(heldBack_, {});
    joined.insert(joined.end(), bytes.begin(), bytes.end());
    bytes = joined;
  }
  while (!bytes.empty()) {
    const auto* marker = static_cast<const std::uint8_t*>(
        memmem(bytes.data(), bytes.size(), kEndOfJobMarker.data(), kEndOfJobMarker.size()));
    if (marker == nullptr) {
      const std::size_t held = markerStartAtEnd(bytes);
      const ByteView data = bytes.first(bytes.size() - held);
      heldBack_.assign(bytes.end() - static_cast<std::ptrdiff_t>(held), bytes.end());
      if (!data.empty()) onData_(data);
      return;
    }
    const auto before = static_cast<std::size_t>(marker - bytes.data());
    if (before > 0) onData_(bytes.first(before));
    onEnd_();
    bytes = bytes.subspan(before + kEndOfJobMarker.size());
  }
}

void PrintDataScanner::finish() {
  const Bytes data = std::exchange(heldBack_, {});
  if (!data.empty()) onData_(data);
}

}  // namespace sim
