#include "npa/npa_command.h"

#include <cassert>

namespace qvn {

NpaCommand::NpaCommand(std::span<const std::uint8_t> packetTemplate)
    : packet_(packetTemplate.data(), static_cast<std::uint32_t>(packetTemplate.size())) {}

NpaCommand::NpaCommand(const Data& packet) : packet_(packet) {}

NpaCommand::~NpaCommand() = default;

bool NpaCommand::isReplyTo(const Data& reply) const { return NpaPacket(reply).isReplyTo(NpaPacket(packet_)); }

void NpaCommand::patch8(std::size_t offset, std::uint8_t value) {
  assert(offset < packet_.getLength());
  packet_.getBuffer()[offset] = value;
}

void NpaCommand::patch16(std::size_t offset, std::uint16_t value) {
  patch8(offset, static_cast<std::uint8_t>(value >> 8));
  patch8(offset + 1, static_cast<std::uint8_t>(value & 0xFF));
}

}  // namespace qvn
