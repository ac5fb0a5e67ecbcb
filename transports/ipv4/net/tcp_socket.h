// A TCP connection to a device.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <tuple>

namespace qvn::ipv4 {

// Where a service of a device is.
struct Endpoint {
  std::uint32_t address = 0;  // in host byte order
  std::uint16_t port = 0;

  friend bool operator<(const Endpoint& left, const Endpoint& right) {
    return std::tie(left.address, left.port) < std::tie(right.address, right.port);
  }
};

// "a.b.c.d", all four in decimal.
bool parseAddress(const std::string& text, std::uint32_t& address);
std::string addressText(std::uint32_t address);

// The result code for a failed socket call.
std::uint32_t codeFromErrno(int error);

class TcpSocket {
 public:
  TcpSocket() = default;
  TcpSocket(TcpSocket&& other) noexcept;
  TcpSocket& operator=(TcpSocket&& other) noexcept;
  ~TcpSocket() { close(); }

  // 0, or why there is no connection: 1225, 1231, 1232, 1460 after `timeout` milliseconds, ...
  std::uint32_t connect(const Endpoint& endpoint, std::uint32_t timeout);

  bool isOpen() const { return fd_ >= 0; }
  int fd() const { return fd_; }

  // Keeps no more than about that many bytes waiting for the device to take them, so that sending goes at the
  // device's own pace.
  void limitUnsent(std::uint32_t bytes);

  // Sends all of it: 0, or why not with what went out in `sent`. 1460 when the device has taken nothing for
  // `timeout` milliseconds.
  std::uint32_t send(const std::uint8_t* bytes, std::size_t size, std::uint32_t timeout, std::size_t& sent);

  // Ends the connection for both sides; whoever waits on the socket wakes up.
  void shutDown();
  // What was sent still reaches the device.
  void close();

 private:
  std::uint32_t tryToConnect(const Endpoint& endpoint, std::uint32_t timeout);

  int fd_ = -1;
};

}  // namespace qvn::ipv4
