// Answers hosts that look for devices: one datagram asks, one answers.
//
//   asked     "QVN-DISCOVER 1 <token>\n"
//   answered  "QVN-DEVICE 1 <token>\n", then a line "key=value\n" each for family, model, serial, name,
//             print and, where there is one, bidi (the two ports)
//
// The token, at most 32 letters and digits, ties an answer to its question.
#pragma once

#include <cstdint>
#include <string>

#include "event_loop.h"
#include "fault_switches.h"
#include "printer.h"
#include "sockets.h"

namespace sim {

class DiscoveryPort {
 public:
  DiscoveryPort(EventLoop& loop, const FaultSwitches& faults, const Identity& identity,
                std::uint16_t printPort, std::uint16_t bidiPort, const std::string& address,
                std::uint16_t port);

  std::uint16_t port() const { return localPort(socket_); }

 private:
  void answer();

  EventLoop& loop_;
  const FaultSwitches& faults_;
  Descriptor socket_;
  std::string description_;
};

}  // namespace sim
