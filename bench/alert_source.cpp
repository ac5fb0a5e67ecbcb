#include "alert_source.h"

#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <vector>

#include "loopback.h"

namespace qvn::bench {
namespace {

// An extended alert (IEEE 1284.1), as long as it takes to carry the time behind its eleven bytes.
constexpr std::array<std::uint8_t, AlertSource::kAlertSize> kAlert = {0xA5, 0, 16, 0x20, 0xF0, 0x73,
                                                                      0,    1, 0,  0,    0};
constexpr std::size_t kTimeOffset = 11;

void sendAlert(int connection) {
  auto alert = kAlert;
  const std::uint64_t now = nanosecondsNow();
  std::memcpy(alert.data() + kTimeOffset, &now, sizeof now);
  if (send(connection, alert.data(), alert.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(alert.size()))
    _exit(1);
}

// Every packet is acknowledged as it came; no request of a registration is longer than one read.
bool acknowledge(int connection) {
  std::uint8_t packet[256];
  const ssize_t got = recv(connection, packet, sizeof packet, 0);
  if (got <= 0) return false;
  if (got > 3) packet[3] = 0x20;
  return send(connection, packet, static_cast<std::size_t>(got), MSG_NOSIGNAL) == got;
}

[[noreturn]] void serve(int listener, int control) {
  std::vector<pollfd> entries = {{control, POLLIN, 0}, {listener, POLLIN, 0}};
  for (;;) {
    if (poll(entries.data(), entries.size(), -1) < 0) _exit(1);
    for (std::size_t i = 2; i < entries.size(); ++i) {
      if (entries[i].revents != 0 && !acknowledge(entries[i].fd)) entries[i].fd = -1;
    }
    if (entries[0].revents != 0) {
      std::uint8_t connection = 0;
      if (read(control, &connection, 1) != 1 || connection + 2u >= entries.size()) _exit(0);
      sendAlert(entries[connection + 2u].fd);
    }
    if (entries[1].revents != 0) entries.push_back({accept(listener, nullptr, nullptr), POLLIN, 0});
  }
}

}  // namespace

AlertSource::AlertSource() {
  const int listener = listenOnLoopback(port_);
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
  }
  close(pair[1]);
  close(listener);
  control_ = pair[0];
}

AlertSource::~AlertSource() {
  close(control_);
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
}

void AlertSource::raise(std::uint8_t connection) {
  if (write(control_, &connection, 1) != 1) {
    throw std::system_error(errno, std::generic_category(), "the alert source's control");
  }
}

std::uint64_t AlertSource::sentAt(std::span<const std::uint8_t> alert) {
  std::uint64_t time = 0;
  if (alert.size() == kAlertSize) std::memcpy(&time, alert.data() + kTimeOffset, sizeof time);
  return time;
}

std::uint64_t nanosecondsNow() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::uint64_t>(now.tv_sec) * 1000000000 + static_cast<std::uint64_t>(now.tv_nsec);
}

}  // namespace qvn::bench
