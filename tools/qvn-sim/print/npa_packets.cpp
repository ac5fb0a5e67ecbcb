#include "print/npa_packets.h"

#include <algorithm>
#include <cctype>

namespace sim {

std::string toHex(ByteView bytes) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const std::uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0x0F];
  }
  return text;
}

std::optional<Bytes> fromHex(std::string_view text) {
  Bytes bytes;
  int high = -1;
  for (const char c : text) {
    if (c == ' ' && high < 0) continue;
    if (std::isxdigit(static_cast<unsigned char>(c)) == 0) return std::nullopt;
    const int digit = c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10;
    if (high < 0) {
      high = digit;
    } else {
      bytes.push_back(static_cast<std::uint8_t>(high << 4 | digit));
      high = -1;
    }
  }
  if (high >= 0) return std::nullopt;
  return bytes;
}

}  // namespace sim

namespace sim::npa {

std::optional<Command> commandOf(ByteView packet) {
  if (packet.size() < kShortestPacket) return std::nullopt;
  const ByteView body = packet.subspan(kCommand);
  for (const CommandEntry& entry : kCommands) {
    if (body.size() >= entry.patternLength &&
        std::equal(body.begin(), body.begin() + static_cast<std::ptrdiff_t>(entry.patternLength),
                   entry.pattern.begin())) {
      return entry.command;
    }
  }
  return std::nullopt;
}

bool isNamed(std::string_view name) {
  return std::any_of(kCommands.begin(), kCommands.end(),
                     [name](const CommandEntry& entry) { return entry.name == name; });
}

const CommandEntry& entryOf(Command command) {
  return *std::find_if(kCommands.begin(), kCommands.end(),
                       [command](const CommandEntry& entry) { return entry.command == command; });
}

std::string_view nameOf(std::optional<Command> command) {
  return command ? entryOf(*command).name : std::string_view();
}

Bytes makePacket(std::uint8_t flags, ByteView body, std::size_t total) {
  Bytes packet(std::max(total, kCommand + body.size()), 0);
  packet[0] = kStartOfPacket;
  writeBig16(packet, 1, static_cast<std::uint16_t>(packet.size() - kUncounted));
  packet[kFlags] = flags;
  std::copy(body.begin(), body.end(), packet.begin() + kCommand);
  return packet;
}

std::uint16_t readBig16(ByteView packet, std::size_t offset) {
  if (offset + 2 > packet.size()) return 0;
  return static_cast<std::uint16_t>(packet[offset] << 8 | packet[offset + 1]);
}

void writeBig16(Bytes& packet, std::size_t offset, std::uint16_t value) {
  packet.at(offset) = static_cast<std::uint8_t>(value >> 8);
  packet.at(offset + 1) = static_cast<std::uint8_t>(value & 0xFF);
}

}  // namespace sim::npa
