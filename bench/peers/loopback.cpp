#include "peers/loopback.h"

#include <arpa/inet.h>
#include <sys/socket.h>

#include <cerrno>
#include <system_error>

namespace qvn::bench {

sockaddr_in loopback(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

int listenOnLoopback(std::uint16_t& port) {
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = loopback(0);
  socklen_t length = sizeof address;
  if (listener < 0 || bind(listener, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
      listen(listener, 8) != 0 ||
      getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
    throw std::system_error(errno, std::generic_category(), "a port on loopback");
  }
  port = ntohs(address.sin_port);
  return listener;
}

}  // namespace qvn::bench
