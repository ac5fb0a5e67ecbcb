// The scan port of a CpdPrinter: ESC commands in, replies and pages out, for several hosts at once; one has a
// page at a time.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "base/bytes.h"
#include "base/connection_id.h"
#include "base/trace.h"
#include "esc/esc_assembler.h"
#include "esc/esc_commands.h"
#include "esc/scanner.h"
#include "faults/fault_switches.h"
#include "net/event_loop.h"
#include "net/message_hosts.h"
#include "net/sockets.h"
#include "page/page_pump.h"
#include "page/page_source.h"
#include "page/scan_engine.h"

namespace sim {

class ScanPort {
 public:
  ScanPort(EventLoop& loop, FaultSwitches& faults, Scanner& scanner, ScanEngine& engine, PageSource& pages,
           Trace& trace);

  // Until then nobody can connect by TCP.
  void listen(const std::string& address, std::uint16_t port) { hosts_.listen(address, port); }
  // Takes in a host that is connected otherwise.
  void connect(Descriptor socket) { hosts_.connect(std::move(socket)); }

  // 0 when it does not listen.
  std::uint16_t port() const { return hosts_.port(); }

 private:
  using Hosts = MessageHosts<EscAssembler, PageOutput>;

  void handle(ConnectionId id, const Bytes& bytes);

  void go(ConnectionId id);
  void beginPage(ConnectionId id);
  void abort(ConnectionId id);
  void endPage(ConnectionId id);
  void sendStatusOfPage(ConnectionId id);

  void reply(ConnectionId id, esc::Command command, Bytes bytes);
  // When the reply to a command may go, for it and for those that wait behind it.
  EventLoop::Clock::time_point momentOfReply(ConnectionId id, esc::Command command);
  void queue(ConnectionId id, ByteView bytes);
  void closing(ConnectionId id);

  EventLoop& loop_;
  FaultSwitches& faults_;
  Scanner& scanner_;
  ScanEngine& engine_;
  PageSource& pages_;
  Trace& trace_;
  Hosts hosts_;
  PagePump<Hosts> pump_;
};

}  // namespace sim
