// The bidi port: packets in, replies and alerts out, for several hosts at once.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "base/bytes.h"
#include "base/connection_id.h"
#include "base/trace.h"
#include "faults/fault_switches.h"
#include "net/event_loop.h"
#include "net/message_hosts.h"
#include "net/sockets.h"
#include "print/npa_packets.h"
#include "print/packet_assembler.h"
#include "print/printer.h"

namespace sim {

class BidiPort {
 public:
  BidiPort(EventLoop& loop, FaultSwitches& faults, Printer& printer, Trace& trace);

  // Until then nobody can connect by TCP, and there is nobody to send to.
  void listen(const std::string& address, std::uint16_t port) { hosts_.listen(address, port); }
  // Takes in a host that is connected otherwise.
  void connect(Descriptor socket) { hosts_.connect(std::move(socket)); }

  // 0 when it does not listen.
  std::uint16_t port() const { return hosts_.port(); }

  // Sends the alert to every host that has asked for its kind.
  void alert(ByteView packet);
  // Sends the status alert to every host that has asked for extended alerts.
  void jobStatus(ByteView packet);
  // Sends any bytes to every host.
  void sendToAll(ByteView bytes);

 private:
  struct Host {
    EventLoop::Clock::time_point earliestReply;
  };

  template <typename Wants>
  void sendTo(ByteView bytes, Wants&& wants);
  void handle(ConnectionId id, const Bytes& packet);
  void reply(ConnectionId id, std::optional<npa::Command> command, Bytes packet);
  void send(ConnectionId id, ByteView bytes);

  EventLoop& loop_;
  FaultSwitches& faults_;
  Printer& printer_;
  Trace& trace_;
  MessageHosts<PacketAssembler, Host> hosts_;
};

}  // namespace sim
