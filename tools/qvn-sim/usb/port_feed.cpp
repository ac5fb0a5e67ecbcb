#include "usb/port_feed.h"

#include "usb/pipe.h"

namespace sim::usb {

std::optional<std::size_t> PortFeed::take(ByteView packets) {
  const auto isFlushed = flush();
  if (!isFlushed) return std::nullopt;
  if (!*isFlushed || packets.empty()) return 0;
  const auto sent = link_.send(packets);
  if (!sent) return std::nullopt;
  const std::size_t taken = wholePackets(*sent, packets.size());
  const ByteView left = packets.subspan(*sent, taken - *sent);
  rest_.assign(left.begin(), left.end());
  return taken;
}

std::optional<bool> PortFeed::flush() {
  if (rest_.empty()) return true;
  const auto sent = link_.send(rest_);
  if (!sent) return std::nullopt;
  rest_.erase(rest_.begin(), rest_.begin() + static_cast<std::ptrdiff_t>(*sent));
  return rest_.empty();
}

}  // namespace sim::usb
