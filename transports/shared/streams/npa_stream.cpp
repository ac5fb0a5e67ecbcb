#include "shared/streams/npa_stream.h"

#include <algorithm>
#include <array>

namespace qvn::shared {
namespace {

constexpr std::size_t kCommand = 4;
constexpr std::size_t kSubCommand = 5;
constexpr std::size_t kExtendedUse = 6;
constexpr std::uint8_t kExtendedCommand = 0xE0;

constexpr std::size_t kUncounted = 3;  // start of packet and length field
constexpr std::size_t kShortest = kCommand + 1;
constexpr std::size_t kShortestAlert = 8;
constexpr std::uint8_t kAlertCommands = 0xF0;

// The requests that register for alerts, by their bytes from kCommand on.
struct Registration {
  std::array<std::uint8_t, 3> bytes;
  std::size_t length;
};
constexpr std::array kRegistrations = {
    Registration{{0x03, 0x03}, 2},        // device status
    Registration{{0xE0, 0x03}, 2},        // extension
    Registration{{0xE0, 0xE1, 0x03}, 3},  // panel
    Registration{{0xE0, 0x73, 0x01}, 3},  // extended
    Registration{{0xE0, 0x73, 0x07}, 3},  // extended, with a language
};

// Of a packet of which at least kUncounted bytes are there.
std::size_t totalLength(PacketView packet) {
  return kUncounted + static_cast<std::size_t>(packet[1] << 8 | packet[2]);
}

}  // namespace

bool isWellFormed(PacketView packet) {
  return packet.size() >= kShortest && packet[0] == kStartOfPacket && totalLength(packet) == packet.size();
}

bool isAlert(PacketView packet) {
  return packet.size() >= kShortestAlert && (packet[kCommand] & kAlertCommands) == kAlertCommands;
}

bool answers(PacketView reply, PacketView request) {
  if (reply.size() < kShortest || request.size() < kShortest) return false;
  const auto agree = [&](std::size_t offset) {
    return reply.size() <= offset || (request.size() > offset && reply[offset] == request[offset]);
  };
  return agree(kCommand) && agree(kSubCommand) &&
         (request[kCommand] != kExtendedCommand || agree(kExtendedUse));
}

PacketView lastingEffect(PacketView request) {
  if (request.size() < kShortest) return {};
  const PacketView body = request.subspan(kCommand);
  for (const Registration& registration : kRegistrations) {
    if (body.size() >= registration.length &&
        std::equal(body.begin(), body.begin() + static_cast<std::ptrdiff_t>(registration.length),
                   registration.bytes.begin())) {
      return body.first(registration.length);
    }
  }
  return {};
}

std::optional<PacketView> NpaStream::next() {
  for (;;) {
    const PacketView unread = bytes();
    const auto start = std::find(unread.begin(), unread.end(), kStartOfPacket);
    drop(static_cast<std::size_t>(start - unread.begin()));
    const PacketView rest = bytes();
    if (rest.size() < kUncounted) return std::nullopt;
    const std::size_t total = totalLength(rest);
    if (total < kShortest) {
      drop(1);
      continue;
    }
    if (rest.size() < total) return std::nullopt;
    drop(total);
    return rest.first(total);
  }
}

}  // namespace qvn::shared
