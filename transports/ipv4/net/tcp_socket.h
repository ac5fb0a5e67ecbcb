// A TCP connection to a device, and the result codes of this transport.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <tuple>

namespace qvn::ipv4 {

// From the published system error codes, beside those of qvn/result_codes.h.
inline constexpr std::uint32_t kInvalidData = 13;          // what the device sent cannot be told apart
inline constexpr std::uint32_t kConnectionLost = 64;       // the device closed or reset the connection
inline constexpr std::uint32_t kConnectionRefused = 1225;  // nothing listens there
inline constexpr std::uint32_t kNotConnected = 1229;       // the connection is not open
inline constexpr std::uint32_t kNetworkUnreachable = 1231;
inline constexpr std::uint32_t kHostUnreachable = 1232;
inline constexpr std::uint32_t kConnectionAborted = 1236;  // this side closed the connection meanwhile

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
  int fd_ = -1;
};

}  // namespace qvn::ipv4
