// The HID port: reports and events out, to every host that is connected.
//
//   offset 0     01 a report, 02 an event
//          1..2  number of bytes that follow, little-endian
//          3..   those bytes
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <string>

#include "base/bytes.h"
#include "net/event_loop.h"
#include "net/sockets.h"
#include "net/tcp_listener.h"

namespace sim {

class HidPort {
 public:
  explicit HidPort(EventLoop& loop);

  // Until then nobody can connect by TCP.
  void listen(const std::string& address, std::uint16_t port) { listener_.listen(address, port); }
  // Takes in a host that is connected otherwise; one too many sees its connection closed.
  void connect(Descriptor socket);

  // 0 when it does not listen.
  std::uint16_t port() const { return listener_.port(); }

  void sendReport(ByteView report);
  void sendEvent(ByteView event);
  // Numbered reports, from 0 on, as fast as each host takes them.
  void sendNumberedReports(std::uint32_t count);

 private:
  using HostId = std::uint64_t;

  // What waits to be sent: numbered reports are made only when they can go.
  struct Waiting {
    Bytes bytes;
    std::uint32_t nextNumber = 0;
    std::uint32_t endNumber = 0;
  };
  struct Host {
    Descriptor socket;
    std::deque<Waiting> waiting;
    std::size_t waitingBytes = 0;  // in `waiting`, numbered reports not counted
    Bytes buffer;                  // what goes next
  };

  void readFrom(HostId id);
  void sendToAll(const Waiting& waiting);
  void fillBuffer(Host& host);
  void pump(HostId id);
  void close(HostId id);

  EventLoop& loop_;
  TcpListener listener_;
  HostId lastId_ = 0;
  std::map<HostId, Host> hosts_;
};

}  // namespace sim
