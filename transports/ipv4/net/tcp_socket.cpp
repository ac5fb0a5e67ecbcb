#include "net/tcp_socket.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <utility>

#include "platform/base/error.h"
#include "qvn/result_codes.h"
#include "qvn/transport/log.h"

namespace qvn::ipv4 {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr char kLogComponent[] = "Ip1Transport";

// What one call of the system takes. A larger one is cut off wherever the limit of what may be unsent is met,
// and woken for the rest of it in smaller and smaller pieces; and the device hears of its beginning only
// then.
constexpr std::size_t kPiece = std::size_t{64} << 10;

std::int64_t millisecondsUntil(SteadyClock::time_point deadline) {
  return std::chrono::ceil<std::chrono::milliseconds>(deadline - SteadyClock::now()).count();
}

int pollTimeout(std::int64_t milliseconds) {
  return static_cast<int>(std::clamp<std::int64_t>(milliseconds, 0, INT_MAX));
}

// Waits for the events until the deadline: 0, 1460 or the code of a failed wait.
std::uint32_t waitFor(int fd, short events, SteadyClock::time_point deadline) {
  for (;;) {
    const std::int64_t left = millisecondsUntil(deadline);
    pollfd entry{fd, events, 0};
    const int ready = poll(&entry, 1, pollTimeout(left));
    if (ready > 0) return QRN_ERROR_SUCCESS;
    if (ready == 0 && left <= INT_MAX) return QRN_ERROR_TIMEOUT;
    if (ready < 0 && errno != EINTR) return codeFromErrno(errno);
  }
}

}  // namespace

std::uint32_t codeFromErrno(int error) {
  switch (error) {
    case ECONNRESET:
    case ECONNABORTED:
    case EPIPE:
    case ENOTCONN:
      return QRN_ERROR_NETNAME_DELETED;
    case ECONNREFUSED:
      return QRN_ERROR_CONNECTION_REFUSED;
    case ENETUNREACH:
    case ENETDOWN:
      return QRN_ERROR_NETWORK_UNREACHABLE;
    case EHOSTUNREACH:
    case EHOSTDOWN:
      return QRN_ERROR_HOST_UNREACHABLE;
    case ETIMEDOUT:
      return QRN_ERROR_TIMEOUT;
    default:
      return platform::errorFromErrno(error);
  }
}

TcpSocket::~TcpSocket() {
  if (!fd_) return;
  // Closing with unread bytes would reset the connection and could cost the device the end of a job.
  ::shutdown(fd_.get(), SHUT_WR);
  std::uint8_t unread[4096];
  for (int reads = 0; reads < 64 && recv(fd_.get(), unread, sizeof unread, MSG_DONTWAIT) > 0; ++reads) {
  }
}

std::uint32_t TcpSocket::connect(const Endpoint& endpoint, std::uint32_t timeout) {
  const std::uint32_t rc = tryToConnect(endpoint, timeout);
  if (isTransportLogged(kLogComponent, log_level::kDetail)) {
    transportLog(kLogComponent, log_level::kDetail,
                 "connect " + addressText(endpoint.address) + ":" + std::to_string(endpoint.port) +
                     " rc=" + std::to_string(rc));
  }
  return rc;
}

std::uint32_t TcpSocket::tryToConnect(const Endpoint& endpoint, std::uint32_t timeout) {
  if (endpoint.port == 0) return QRN_ERROR_INVALID_PARAMETER;
  const auto deadline = SteadyClock::now() + std::chrono::milliseconds(timeout);
  platform::UniqueDescriptor made(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!made) return codeFromErrno(errno);
  sockaddr_in where{};
  where.sin_family = AF_INET;
  where.sin_port = htons(endpoint.port);
  where.sin_addr.s_addr = htonl(endpoint.address);
  if (::connect(made.get(), reinterpret_cast<const sockaddr*>(&where), sizeof where) != 0) {
    if (errno != EINPROGRESS) return codeFromErrno(errno);
    if (const std::uint32_t rc = waitFor(made.get(), POLLOUT, deadline); rc != QRN_ERROR_SUCCESS) return rc;
    int error = 0;
    socklen_t size = sizeof error;
    getsockopt(made.get(), SOL_SOCKET, SO_ERROR, &error, &size);
    if (error != 0) return codeFromErrno(error);
  }
  const int on = 1;
  setsockopt(made.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  const std::uint32_t rc = interrupted_.open();
  if (rc == QRN_ERROR_SUCCESS) fd_ = std::move(made);
  return rc;
}

void TcpSocket::limitUnsent(std::uint32_t bytes) {
  setsockopt(fd_.get(), IPPROTO_TCP, TCP_NOTSENT_LOWAT, &bytes, sizeof bytes);
}

void TcpSocket::wait(SteadyClock::time_point deadline) {
  pollfd entries[] = {{fd_.get(), POLLIN, 0}, {interrupted_.fd(), POLLIN, 0}};
  poll(entries, std::size(entries), pollTimeout(millisecondsUntil(deadline)));
  if (entries[1].revents != 0) interrupted_.take();
}

std::uint32_t TcpSocket::receive(std::span<std::uint8_t> room, std::size_t& received) {
  received = 0;
  const ssize_t got = recv(fd_.get(), room.data(), room.size(), MSG_DONTWAIT);
  if (got == 0) return QRN_ERROR_NETNAME_DELETED;
  if (got < 0) return errno == EAGAIN || errno == EINTR ? QRN_ERROR_SUCCESS : codeFromErrno(errno);
  received = static_cast<std::size_t>(got);
  return QRN_ERROR_SUCCESS;
}

std::uint32_t TcpSocket::send(std::span<const std::uint8_t> bytes, std::uint32_t timeout, std::size_t& sent) {
  sent = 0;
  while (sent < bytes.size()) {
    const auto piece = bytes.subspan(sent, std::min(bytes.size() - sent, kPiece));
    const ssize_t taken = ::send(fd_.get(), piece.data(), piece.size(), MSG_NOSIGNAL);
    if (taken > 0) {
      sent += static_cast<std::size_t>(taken);
    } else if (taken < 0 && errno == EAGAIN) {
      const auto deadline = SteadyClock::now() + std::chrono::milliseconds(timeout);
      if (const std::uint32_t rc = waitFor(fd_.get(), POLLOUT, deadline); rc != QRN_ERROR_SUCCESS) return rc;
    } else if (taken < 0 && errno != EINTR) {
      return codeFromErrno(errno);
    }
  }
  return QRN_ERROR_SUCCESS;
}

void TcpSocket::shutDown() { ::shutdown(fd_.get(), SHUT_RDWR); }

}  // namespace qvn::ipv4
