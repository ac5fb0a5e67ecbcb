#include "peers/forked_peer.h"

#include <netinet/tcp.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "peers/loopback.h"

namespace qvn::bench {

ForkedPeer::ForkedPeer(const std::function<void(int listener, int control)>& serve,
                       const std::function<void(int listener)>& prepare) {
  const int listener = listenOnLoopback(port_);
  if (prepare) prepare(listener);
  int pair[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair) != 0) {
    throw std::system_error(errno, std::generic_category(), "socketpair");
  }
  process_ = fork();
  if (process_ < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (process_ == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    close(pair[0]);
    serve(listener, pair[1]);
    _exit(0);
  }
  close(pair[1]);
  close(listener);
  control_ = pair[0];
}

ForkedPeer::~ForkedPeer() {
  close(control_);
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
}

void ForkedPeer::tell(const void* order, std::size_t size) const {
  if (write(control_, order, size) != static_cast<ssize_t>(size)) {
    throw std::system_error(errno, std::generic_category(), "the peer's control");
  }
}

void serveConnections(int listener, int control,
                      const std::function<bool(const std::vector<int>&)>& onControl,
                      const std::function<bool(int)>& onConnection) {
  std::vector<int> connections;
  std::vector<pollfd> entries = {{control, POLLIN, 0}, {listener, POLLIN, 0}};
  for (;;) {
    if (poll(entries.data(), entries.size(), -1) < 0) return;
    if (entries[1].revents != 0) {
      // Before anything else: an order may be for whoever has just connected.
      const int connection = accept(listener, nullptr, nullptr);
      const int on = 1;
      setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
      connections.push_back(connection);
      entries.push_back({connection, POLLIN, 0});
      continue;
    }
    for (std::size_t i = 2; i < entries.size(); ++i) {
      if (entries[i].revents == 0 || onConnection(entries[i].fd)) continue;
      close(entries[i].fd);
      entries[i].fd = connections[i - 2] = -1;
    }
    if (entries[0].revents != 0 && !onControl(connections)) return;
  }
}

void sendAll(int connection, const void* bytes, std::size_t size) {
  const auto* at = static_cast<const char*>(bytes);
  while (size > 0) {
    const ssize_t sent = send(connection, at, size, MSG_NOSIGNAL);
    if (sent <= 0) return;
    at += sent;
    size -= static_cast<std::size_t>(sent);
  }
}

}  // namespace qvn::bench
