#include "net/sockets.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace sim {
namespace {

[[noreturn]] void fail(const char* what) { throw std::system_error(errno, std::generic_category(), what); }

sockaddr_in socketAddress(const std::string& address, std::uint16_t port) {
  sockaddr_in result{};
  result.sin_family = AF_INET;
  result.sin_port = htons(port);
  if (inet_pton(AF_INET, address.c_str(), &result.sin_addr) != 1) {
    throw std::invalid_argument("not an IPv4 address: " + address);
  }
  return result;
}

// A person has to find out which of the ports it is.
[[noreturn]] void failToTake(const char* kind, const std::string& address, std::uint16_t port) {
  throw std::system_error(errno, std::generic_category(),
                          std::string("cannot take ") + (port == 0 ? "a" : "the") + " " + kind + " port " +
                              (port == 0 ? "" : std::to_string(port) + " ") + "on " + address);
}

void bindTo(const Descriptor& socket, const char* kind, const std::string& address, std::uint16_t port) {
  const sockaddr_in where = socketAddress(address, port);
  if (bind(socket.get(), reinterpret_cast<const sockaddr*>(&where), sizeof where) != 0) {
    failToTake(kind, address, port);
  }
}

}  // namespace

Descriptor::~Descriptor() { close(); }

void Descriptor::close() {
  if (fd_ >= 0) ::close(std::exchange(fd_, -1));
}

Descriptor listenTcp(const std::string& address, std::uint16_t port, int receiveBuffer) {
  Descriptor listener(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!listener.isOpen()) fail("socket");
  const int on = 1;
  setsockopt(listener.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  if (receiveBuffer > 0) {
    setsockopt(listener.get(), SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
  }
  bindTo(listener, "TCP", address, port);
  if (listen(listener.get(), SOMAXCONN) != 0) failToTake("TCP", address, port);
  return listener;
}

Descriptor bindUdp(const std::string& address, std::uint16_t port) {
  Descriptor bound(socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!bound.isOpen()) fail("socket");
  bindTo(bound, "UDP", address, port);
  return bound;
}

std::uint16_t localPort(const Descriptor& socket) {
  sockaddr_in where{};
  socklen_t size = sizeof where;
  if (getsockname(socket.get(), reinterpret_cast<sockaddr*>(&where), &size) != 0) fail("getsockname");
  return ntohs(where.sin_port);
}

Descriptor acceptTcp(const Descriptor& listener) {
  Descriptor accepted(accept4(listener.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
  if (accepted.isOpen()) {
    const int on = 1;
    setsockopt(accepted.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  }
  return accepted;
}

std::pair<Descriptor, Descriptor> socketPair(bool keepsMessages) {
  int ends[2];
  const int type = (keepsMessages ? SOCK_SEQPACKET : SOCK_STREAM) | SOCK_NONBLOCK | SOCK_CLOEXEC;
  if (socketpair(AF_UNIX, type, 0, ends) != 0) fail("socketpair");
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

void resetOnClose(const Descriptor& socket) {
  const linger abort{1, 0};
  setsockopt(socket.get(), SOL_SOCKET, SO_LINGER, &abort, sizeof abort);
}

}  // namespace sim
