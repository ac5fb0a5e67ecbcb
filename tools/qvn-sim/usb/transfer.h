// A transfer between a host and an endpoint of the device, from its submission to its end.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "base/bytes.h"
#include "base/connection_id.h"

namespace sim::usb {

// The direction bit of an endpoint's address, and of the type of a control request.
inline constexpr std::uint8_t kIn = 0x80;

// How a transfer ended: by the numbers that Linux gives, which USB/IP has too.
enum class Status : std::int32_t {
  Done = 0,
  NoMemory = -12,    // more than is taken
  Stall = -32,       // the endpoint is halted, or there is none
  Overflow = -75,    // a packet longer than the room for it
  Cancelled = -104,  // by the host
  Shutdown = -108,   // the endpoint was set up anew
  Short = -121,      // less than a host wanted that allows no less
};

struct Transfer {
  ConnectionId host = 0;
  std::uint32_t sequence = 0;  // the host's number for it
  std::uint8_t endpoint = 0;
  std::size_t length = 0;               // of `data` going out, or of the room for what comes in
  bool endsWithZeroPacket = false;      // going out, where the last packet is a full one
  bool mustBeFull = false;              // coming in
  std::array<std::uint8_t, 8> setup{};  // of a control request
  Bytes data;                           // what goes out, or what has come in
  std::size_t taken = 0;                // of what goes out
  Status status = Status::Done;

  bool isIn() const { return (endpoint & kIn) != 0; }
  std::size_t transferred() const { return isIn() ? data.size() : taken; }
};

}  // namespace sim::usb
