// The scan port: ESC commands in, replies and pages out, for several hosts at once; one has a page at a time.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "esc_assembler.h"
#include "event_loop.h"
#include "fault_switches.h"
#include "message_hosts.h"
#include "page_sender.h"
#include "page_store.h"
#include "picture.h"
#include "scanner.h"
#include "trace.h"

namespace sim {

class ScanPort {
 public:
  // `blockSize` is the longest payload of a scan data block.
  ScanPort(EventLoop& loop, FaultSwitches& faults, Scanner& scanner, Picture& picture, PageStore& store,
           Trace& trace, std::size_t blockSize);

  // Until then nobody can connect.
  void listen(const std::string& address, std::uint16_t port) { hosts_.listen(address, port); }

  // 0 when it does not listen.
  std::uint16_t port() const { return hosts_.port(); }

 private:
  struct Host {
    EventLoop::Clock::time_point earliestReply;
    Bytes replies;                   // whole ones, but for the first; they go between two blocks of a page
    std::optional<PageSender> page;  // absent while a page waits for its delayed beginning or status
    bool stepPending = false;        // of a page that is sent slowly
  };

  void handle(ConnectionId id, const Bytes& bytes);

  void go(ConnectionId id);
  void beginPage(ConnectionId id);
  void abort(ConnectionId id);
  void endPage(ConnectionId id);
  void sendStatusOfPage(ConnectionId id);

  void reply(ConnectionId id, esc::Command command, Bytes bytes);
  // When the reply to a command may go, for it and for those that wait behind it.
  EventLoop::Clock::time_point momentOfReply(Host& host, esc::Command command);
  // Adds to what waits to be sent; a host that has not read for too long loses its connection.
  void queue(ConnectionId id, ByteView bytes);

  // Sends what the socket takes, and comes again when it takes more.
  void pump(ConnectionId id);
  // What to send next; nothing when there is nothing now, or no connection any more.
  ByteView nextBytes(ConnectionId id);
  void waitForRate(ConnectionId id);
  void closing(ConnectionId id);

  EventLoop& loop_;
  FaultSwitches& faults_;
  Scanner& scanner_;
  Picture& picture_;
  PageStore& store_;
  Trace& trace_;
  const std::size_t blockSize_;
  MessageHosts<EscAssembler, Host> hosts_;
};

}  // namespace sim
