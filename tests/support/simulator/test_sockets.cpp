#include "support/simulator/test_sockets.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace qvn::test {
namespace {

constexpr int kPatience = 10000;

sockaddr_in where(const std::string& address, std::uint16_t port) {
  sockaddr_in result{};
  result.sin_family = AF_INET;
  result.sin_port = htons(port);
  inet_pton(AF_INET, address.c_str(), &result.sin_addr);
  return result;
}

void check(bool succeeded, const char* what) {
  if (!succeeded) throw std::system_error(errno, std::generic_category(), what);
}

bool isReadable(int fd) {
  pollfd entry{fd, POLLIN, 0};
  return poll(&entry, 1, 0) != 0;
}

void waitReadable(int fd) {
  pollfd entry{fd, POLLIN, 0};
  if (poll(&entry, 1, kPatience) == 0) throw std::runtime_error("nothing comes");
}

int boundSocket(int type, const std::string& address, std::uint16_t& port) {
  const int fd = socket(AF_INET, type | SOCK_CLOEXEC, 0);
  check(fd >= 0, "socket");
  sockaddr_in at = where(address, 0);
  check(bind(fd, reinterpret_cast<const sockaddr*>(&at), sizeof at) == 0, "bind");
  socklen_t size = sizeof at;
  check(getsockname(fd, reinterpret_cast<sockaddr*>(&at), &size) == 0, "getsockname");
  port = ntohs(at.sin_port);
  return fd;
}

}  // namespace

Bytes hex(std::string_view digits) {
  Bytes bytes;
  std::string pair;
  for (const char c : digits) {
    if (c == ' ') continue;
    pair += c;
    if (pair.size() < 2) continue;
    bytes.push_back(static_cast<std::uint8_t>(std::stoul(pair, nullptr, 16)));
    pair.clear();
  }
  return bytes;
}

Bytes repeated(std::size_t count, std::uint8_t byte) { return Bytes(count, byte); }

std::string toHex(const Bytes& bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) {
    char digits[4];
    std::snprintf(digits, sizeof digits, "%s%02X", text.empty() ? "" : " ", byte);
    text += digits;
  }
  return text;
}

Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

Bytes bytesOf(std::string_view text) { return Bytes(text.begin(), text.end()); }

Stream::Stream(Stream&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}

Stream& Stream::operator=(Stream&& other) noexcept {
  std::swap(fd_, other.fd_);
  return *this;
}

Stream Stream::connect(const std::string& address, std::uint16_t port) {
  Stream stream(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const sockaddr_in at = where(address, port);
  check(::connect(stream.fd_, reinterpret_cast<const sockaddr*>(&at), sizeof at) == 0, "connect");
  const int on = 1;
  setsockopt(stream.fd_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  return stream;
}

void Stream::send(const Bytes& bytes) {
  std::size_t sent = 0;
  while (sent < bytes.size()) {
    const ssize_t taken = ::send(fd_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
    check(taken > 0, "send");
    sent += static_cast<std::size_t>(taken);
  }
}

Bytes Stream::receive(std::size_t count) {
  Bytes bytes(count);
  std::size_t received = 0;
  while (received < count) {
    waitReadable(fd_);
    const ssize_t got = recv(fd_, bytes.data() + received, count - received, 0);
    if (got <= 0) break;
    received += static_cast<std::size_t>(got);
  }
  bytes.resize(received);
  return bytes;
}

Bytes Stream::receivePacket() {
  Bytes packet = receive(3);
  if (packet.size() < 3) return {};
  return packet + receive(static_cast<std::size_t>(packet[1] << 8 | packet[2]));
}

std::string Stream::ask(std::string_view request) {
  send(hex(request));
  return toHex(receivePacket());
}

void Stream::endSending() { ::shutdown(fd_, SHUT_WR); }

bool Stream::isEnded() {
  std::uint8_t buffer[4096];
  ssize_t got;
  do {
    waitReadable(fd_);
    got = recv(fd_, buffer, sizeof buffer, 0);
  } while (got > 0);
  return got == 0 || errno == ECONNRESET;
}

bool Stream::isSilent() const { return !isReadable(fd_); }

void Stream::reset() {
  const linger abort{1, 0};
  setsockopt(fd_, SOL_SOCKET, SO_LINGER, &abort, sizeof abort);
  close();
}

void Stream::close() {
  if (fd_ >= 0) ::close(std::exchange(fd_, -1));
}

Listener::Listener(int backlog) : fd_(boundSocket(SOCK_STREAM, "127.0.0.1", port_)) {
  check(listen(fd_, backlog) == 0, "listen");
}

Listener::~Listener() { ::close(fd_); }

Stream Listener::accept() {
  waitReadable(fd_);
  return Stream(accept4(fd_, nullptr, nullptr, SOCK_CLOEXEC));
}

bool Listener::isWaiting() const { return isReadable(fd_); }

Datagrams::Datagrams(const std::string& address) : fd_(boundSocket(SOCK_DGRAM, address, port_)) {}

Datagrams::~Datagrams() { ::close(fd_); }

void Datagrams::send(const std::string& address, std::uint16_t port, std::string_view datagram) {
  const sockaddr_in at = where(address, port);
  sendto(fd_, datagram.data(), datagram.size(), 0, reinterpret_cast<const sockaddr*>(&at), sizeof at);
}

std::string Datagrams::receive() {
  waitReadable(fd_);
  char buffer[4096];
  sockaddr_in from{};
  socklen_t size = sizeof from;
  const ssize_t got = recvfrom(fd_, buffer, sizeof buffer, 0, reinterpret_cast<sockaddr*>(&from), &size);
  check(got >= 0, "recvfrom");
  char text[INET_ADDRSTRLEN];
  lastFrom_ = inet_ntop(AF_INET, &from.sin_addr, text, sizeof text);
  lastPort_ = ntohs(from.sin_port);
  return std::string(buffer, static_cast<std::size_t>(got));
}

void Datagrams::answer(std::string_view datagram) { send(lastFrom_, lastPort_, datagram); }

}  // namespace qvn::test
