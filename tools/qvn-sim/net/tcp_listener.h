// A port on which several hosts may be connected at once.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "net/event_loop.h"
#include "net/sockets.h"

namespace sim {

class TcpListener {
 public:
  using OnConnected = std::function<void(Descriptor)>;

  // `onConnected` gets each new connection; a host whose connection it drops sees it closed.
  TcpListener(EventLoop& loop, OnConnected onConnected);

  // Until then nobody can connect.
  void listen(const std::string& address, std::uint16_t port);

  // 0 when it does not listen.
  std::uint16_t port() const { return socket_.isOpen() ? localPort(socket_) : std::uint16_t{0}; }

  // Takes in the hosts that have connected since the loop last looked.
  void acceptWaiting();

 private:
  EventLoop& loop_;
  const OnConnected onConnected_;
  Descriptor socket_;
};

}  // namespace sim
