// The plain sockets that tests use to play a host, or a device that misbehaves. Everything waits 10 s at
// most.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qvn::test {

using Bytes = std::vector<std::uint8_t>;

// "A5 00 03" -> the bytes; `repeat` copies of one byte.
Bytes hex(std::string_view digits);
Bytes repeated(std::size_t count, std::uint8_t byte);
std::string toHex(const Bytes& bytes);
Bytes operator+(Bytes left, const Bytes& right);
Bytes bytesOf(std::string_view text);

// One end of a TCP connection.
class Stream {
 public:
  explicit Stream(int fd) : fd_(fd) {}
  Stream(Stream&& other) noexcept;
  Stream& operator=(Stream&& other) noexcept;
  ~Stream() { close(); }

  // Connects to a port on an address of loopback.
  static Stream connect(const std::string& address, std::uint16_t port);

  void send(const Bytes& bytes);
  // Exactly that many bytes; fewer when the peer ends the connection first.
  Bytes receive(std::size_t count);
  // One packet framed by its length field; empty when the peer ends the connection.
  Bytes receivePacket();
  // Sends a packet and gives the next one that comes, in hexadecimal.
  std::string ask(std::string_view request);
  // Sends nothing more; the peer sees the end of what came.
  void endSending();
  // Reads on until the connection ends, and says whether it did.
  bool isEnded();
  // Whether nothing can be read now.
  bool isSilent() const;
  // The peer sees a reset.
  void reset();
  void close();

 private:
  int fd_;
};

// A TCP port on 127.0.0.1 for devices that misbehave.
class Listener {
 public:
  // `backlog` connections may wait to be accepted.
  explicit Listener(int backlog = 8);
  ~Listener();
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  std::uint16_t port() const { return port_; }
  Stream accept();
  // Whether somebody has connected who was not accepted yet.
  bool isWaiting() const;

 private:
  std::uint16_t port_ = 0;  // before the socket, whose binding sets it
  int fd_ = -1;
};

// A UDP port on an address of loopback.
class Datagrams {
 public:
  explicit Datagrams(const std::string& address = "127.0.0.1");
  ~Datagrams();
  Datagrams(const Datagrams&) = delete;
  Datagrams& operator=(const Datagrams&) = delete;

  std::uint16_t port() const { return port_; }
  void send(const std::string& address, std::uint16_t port, std::string_view datagram);
  // The next datagram; remembers where it came from.
  std::string receive();
  void answer(std::string_view datagram);
  // The port that the datagram received last came from.
  std::uint16_t askedFrom() const { return lastPort_; }

 private:
  std::uint16_t port_ = 0;  // before the socket, whose binding sets it
  int fd_ = -1;
  std::string lastFrom_;
  std::uint16_t lastPort_ = 0;
};

}  // namespace qvn::test
