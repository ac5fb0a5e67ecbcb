// The bidi port: packets in, replies and alerts out, for several hosts at once.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "event_loop.h"
#include "fault_switches.h"
#include "packet_assembler.h"
#include "printer.h"
#include "sockets.h"
#include "tcp_listener.h"
#include "trace.h"

namespace sim {

class BidiPort {
 public:
  BidiPort(EventLoop& loop, FaultSwitches& faults, Printer& printer, Trace& trace);

  // Until then nobody can connect, and there is nobody to send to.
  void listen(const std::string& address, std::uint16_t port) { listener_.listen(address, port); }

  // 0 when it does not listen.
  std::uint16_t port() const { return listener_.port(); }

  // Sends the alert to every host that has asked for its kind.
  void alert(ByteView packet);
  // Sends the status alert to every host that has asked for extended alerts.
  void jobStatus(ByteView packet);
  // Sends any bytes to every host.
  void sendToAll(ByteView bytes);

 private:
  struct Connection {
    Descriptor socket;
    PacketAssembler assembler;
    std::uint64_t partialSince = 0;  // counts what arrived, to tell a stalled packet from a slow one
    EventLoop::Clock::time_point earliestReply;
  };

  template <typename Wants>
  void sendTo(ByteView bytes, Wants&& wants);
  void connected(Descriptor socket);
  void readFrom(ConnectionId id);
  void handle(ConnectionId id, const Bytes& packet);
  void reply(ConnectionId id, std::optional<npa::Command> command, Bytes packet);
  void send(ConnectionId id, ByteView bytes);
  void handlePackets(ConnectionId id);
  void watchPartial(ConnectionId id);
  void close(ConnectionId id);

  EventLoop& loop_;
  FaultSwitches& faults_;
  Printer& printer_;
  Trace& trace_;
  TcpListener listener_;
  ConnectionId lastId_ = 0;
  std::map<ConnectionId, Connection> connections_;
};

}  // namespace sim
