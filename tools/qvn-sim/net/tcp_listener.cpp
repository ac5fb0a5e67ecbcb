#include "net/tcp_listener.h"

#include <utility>

namespace sim {

TcpListener::TcpListener(EventLoop& loop, OnConnected onConnected)
    : loop_(loop), onConnected_(std::move(onConnected)) {}

void TcpListener::listen(const std::string& address, std::uint16_t port) {
  socket_ = listenTcp(address, port, 0);
  loop_.watch(socket_.get(), [this] { acceptWaiting(); });
}

void TcpListener::acceptWaiting() {
  for (;;) {
    Descriptor socket = acceptTcp(socket_);
    if (!socket.isOpen()) return;
    onConnected_(std::move(socket));
  }
}

}  // namespace sim
