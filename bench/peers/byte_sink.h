// A peer that takes bytes on a loopback port and throws them away, in a process of its own.
#pragma once

#include <cstddef>
#include <cstdint>

#include "peers/forked_peer.h"

namespace qvn::bench {

class ByteSink {
 public:
  // Takes at most that many bytes a second; 0 is as fast as it can. Made before the process has threads: the
  // sink is a fork of it.
  explicit ByteSink(std::uint64_t bytesPerSecond = 0);

  std::uint16_t port() const { return peer_.port(); }

  // The next connection brings that many bytes; wait() returns when the sink has got them all.
  void expect(std::uint64_t bytes) { peer_.tell(bytes); }
  void wait();

 private:
  const ForkedPeer peer_;
};

// A blocking connection to a loopback port, as plain as a program can make it.
class PlainSocket {
 public:
  explicit PlainSocket(std::uint16_t port);
  ~PlainSocket();
  PlainSocket(const PlainSocket&) = delete;
  PlainSocket& operator=(const PlainSocket&) = delete;

  void writeAll(const std::uint8_t* bytes, std::size_t size) const;
  std::size_t read(std::uint8_t* bytes, std::size_t size) const;

 private:
  int fd_;
};

}  // namespace qvn::bench
