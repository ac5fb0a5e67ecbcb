// Answers hosts that look for devices: one datagram asks, one answers.
//
//   asked     "QVN-DISCOVER 1 <token>\n"
//   answered  "QVN-DEVICE 1 <token>\n", then a line "key=value\n" each for family, model, serial, name,
//             print and, where the device has them, bidi, scan and hid (the ports)
//
// The token, at most 32 letters and digits, ties an answer to its question.
#pragma once

#include <cstdint>
#include <string>

#include "faults/fault_switches.h"
#include "net/event_loop.h"
#include "net/sockets.h"
#include "print/printer.h"

namespace sim {

// 0 for one that the device has not.
struct TcpPorts {
  std::uint16_t print;
  std::uint16_t bidi;
  std::uint16_t scan;
  std::uint16_t hid;
};

class DiscoveryPort {
 public:
  DiscoveryPort(EventLoop& loop, const FaultSwitches& faults, const Identity& identity, const TcpPorts& ports,
                const std::string& address, std::uint16_t port);

  std::uint16_t port() const { return localPort(socket_); }

 private:
  void answer();

  EventLoop& loop_;
  const FaultSwitches& faults_;
  Descriptor socket_;
  std::string description_;
};

}  // namespace sim
