#include "peers/byte_sink.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <vector>

#include "peers/loopback.h"

namespace qvn::bench {
namespace {

constexpr std::size_t kReadSize = std::size_t{64} << 10;

// A slow sink takes its bytes in steps, with little room for more and in packets of a wire's size, as a
// printer does. What it did not get in time is not made up for.
constexpr long kStepMilliseconds = 2;
constexpr int kSlowReceiveBuffer = 65536;
constexpr int kWirePacket = 1460;

[[noreturn]] void fail(const char* what) { throw std::system_error(errno, std::generic_category(), what); }

void sleepFor(long milliseconds) {
  const timespec duration{.tv_sec = 0, .tv_nsec = milliseconds * 1000000};
  clock_nanosleep(CLOCK_MONOTONIC, 0, &duration, nullptr);
}

// Takes one connection's bytes: says so when the expected number has come, and reads on to the end.
void serveConnection(int listener, int control, std::uint64_t expected, std::uint64_t bytesPerSecond) {
  std::vector<std::uint8_t> buffer(kReadSize);
  const int connection = accept(listener, nullptr, nullptr);
  std::uint64_t allowance = 0;
  std::uint64_t received = 0;
  for (;;) {
    std::size_t room = buffer.size();
    if (bytesPerSecond != 0) {
      if (allowance == 0) {
        sleepFor(kStepMilliseconds);
        allowance = bytesPerSecond * kStepMilliseconds / 1000;
      }
      room = static_cast<std::size_t>(std::min<std::uint64_t>(room, allowance));
    }
    const ssize_t got = read(connection, buffer.data(), room);
    if (got <= 0) break;
    const auto count = static_cast<std::uint64_t>(got);
    if (bytesPerSecond != 0) allowance -= count;
    if (received < expected && received + count >= expected && write(control, "", 1) != 1) break;
    received += count;
  }
  close(connection);
}

void serve(int listener, int control, std::uint64_t bytesPerSecond) {
  std::uint64_t expected = 0;
  while (read(control, &expected, sizeof expected) == sizeof expected) {
    serveConnection(listener, control, expected, bytesPerSecond);
  }
}

void makeSlow(int listener) {
  setsockopt(listener, SOL_SOCKET, SO_RCVBUF, &kSlowReceiveBuffer, sizeof kSlowReceiveBuffer);
  setsockopt(listener, IPPROTO_TCP, TCP_MAXSEG, &kWirePacket, sizeof kWirePacket);
}

}  // namespace

ByteSink::ByteSink(std::uint64_t bytesPerSecond)
    : peer_([=](int listener, int control) { serve(listener, control, bytesPerSecond); },
            [=](int listener) {
              if (bytesPerSecond != 0) makeSlow(listener);
            }) {}

void ByteSink::wait() {
  char done = 0;
  if (read(peer_.control(), &done, 1) != 1) fail("the sink has ended");
}

PlainSocket::PlainSocket(std::uint16_t port) : fd_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  const sockaddr_in address = loopback(port);
  if (fd_ < 0 || connect(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
    fail("connect");
  const int on = 1;
  setsockopt(fd_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

PlainSocket::~PlainSocket() { close(fd_); }

void PlainSocket::writeAll(const std::uint8_t* bytes, std::size_t size) const {
  while (size > 0) {
    const ssize_t written = ::write(fd_, bytes, size);
    if (written < 0) fail("write");
    bytes += written;
    size -= static_cast<std::size_t>(written);
  }
}

std::size_t PlainSocket::read(std::uint8_t* bytes, std::size_t size) const {
  const ssize_t got = ::read(fd_, bytes, size);
  if (got <= 0) fail("read");
  return static_cast<std::size_t>(got);
}

}  // namespace qvn::bench
