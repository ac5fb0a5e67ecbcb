// NpaCommand: a packet that the library sends, built from a fixed template and patched.
#pragma once

#include <cstdint>
#include <span>

#include "npa/npa_packet.h"
#include "qvn/transport/data.h"

namespace qvn {

class NpaCommand {
 public:
  // A copy of the template.
  explicit NpaCommand(std::span<const std::uint8_t> packetTemplate);
  // A packet that came from a client or a device.
  explicit NpaCommand(const Data& packet);
  virtual ~NpaCommand();

  // Whether `reply` answers this command.
  virtual bool isReplyTo(const Data& reply) const;

  Data& packet() { return packet_; }
  const Data& packet() const { return packet_; }

 protected:
  // Sets one byte of the template, or two with the high one first. The offset lies within the template.
  void patch8(std::size_t offset, std::uint8_t value);
  void patch16(std::size_t offset, std::uint16_t value);

 private:
  Data packet_;
};

}  // namespace qvn
