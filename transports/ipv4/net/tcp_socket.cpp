#include "net/tcp_socket.h"

#include <arpa/inet.h>
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

// Waits for the events until the deadline: 0, 1460 or the code of a failed wait.
std::uint32_t waitFor(int fd, short events, SteadyClock::time_point deadline) {
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - SteadyClock::now()).count();
    pollfd entry{fd, events, 0};
    const int ready = poll(&entry, 1, static_cast<int>(std::clamp<std::int64_t>(left, 0, INT_MAX)));
    if (ready > 0) return QRN_ERROR_SUCCESS;
    if (ready == 0 && left <= INT_MAX) return QRN_ERROR_TIMEOUT;
    if (ready < 0 && errno != EINTR) return codeFromErrno(errno);
  }
}

}  // namespace

bool parseAddress(const std::string& text, std::uint32_t& address) {
  in_addr parsed{};
  if (inet_pton(AF_INET, text.c_str(), &parsed) != 1) return false;
  address = ntohl(parsed.s_addr);
  return true;
}

std::string addressText(std::uint32_t address) {
  in_addr network{};
  network.s_addr = htonl(address);
  char text[INET_ADDRSTRLEN];
  return inet_ntop(AF_INET, &network, text, sizeof text);
}

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

TcpSocket::TcpSocket(TcpSocket&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}

TcpSocket& TcpSocket::operator=(TcpSocket&& other) noexcept {
  std::swap(fd_, other.fd_);
  return *this;
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
  close();
  if (endpoint.port == 0) return QRN_ERROR_INVALID_PARAMETER;
  const auto deadline = SteadyClock::now() + std::chrono::milliseconds(timeout);
  TcpSocket made;
  made.fd_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (!made.isOpen()) return codeFromErrno(errno);
  sockaddr_in where{};
  where.sin_family = AF_INET;
  where.sin_port = htons(endpoint.port);
  where.sin_addr.s_addr = htonl(endpoint.address);
  if (::connect(made.fd_, reinterpret_cast<const sockaddr*>(&where), sizeof where) != 0) {
    if (errno != EINPROGRESS) return codeFromErrno(errno);
    if (const std::uint32_t rc = waitFor(made.fd_, POLLOUT, deadline); rc != QRN_ERROR_SUCCESS) return rc;
    int error = 0;
    socklen_t size = sizeof error;
    getsockopt(made.fd_, SOL_SOCKET, SO_ERROR, &error, &size);
    if (error != 0) return codeFromErrno(error);
  }
  const int on = 1;
  setsockopt(made.fd_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  std::swap(fd_, made.fd_);
  return QRN_ERROR_SUCCESS;
}

void TcpSocket::limitUnsent(std::uint32_t bytes) {
  if (isOpen()) setsockopt(fd_, IPPROTO_TCP, TCP_NOTSENT_LOWAT, &bytes, sizeof bytes);
}

std::uint32_t TcpSocket::send(const std::uint8_t* bytes, std::size_t size, std::uint32_t timeout,
                              std::size_t& sent) {
  sent = 0;
  while (sent < size) {
    const ssize_t taken = ::send(fd_, bytes + sent, std::min(size - sent, kPiece), MSG_NOSIGNAL);
    if (taken > 0) {
      sent += static_cast<std::size_t>(taken);
    } else if (taken < 0 && errno == EAGAIN) {
      const auto deadline = SteadyClock::now() + std::chrono::milliseconds(timeout);
      if (const std::uint32_t rc = waitFor(fd_, POLLOUT, deadline); rc != QRN_ERROR_SUCCESS) return rc;
    } else if (taken < 0 && errno != EINTR) {
      return codeFromErrno(errno);
    }
  }
  return QRN_ERROR_SUCCESS;
}

void TcpSocket::shutDown() {
  if (isOpen()) ::shutdown(fd_, SHUT_RDWR);
}

void TcpSocket::close() {
  if (!isOpen()) return;
  // Closing with unread bytes would reset the connection and could cost the device the end of a job.
  ::shutdown(fd_, SHUT_WR);
  std::uint8_t unread[4096];
  for (int reads = 0; reads < 64 && recv(fd_, unread, sizeof unread, MSG_DONTWAIT) > 0; ++reads) {
  }
  ::close(std::exchange(fd_, -1));
}

}  // namespace qvn::ipv4
