// A device's side of a measurement on a loopback port, in a process of its own.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace qvn::bench {

class ForkedPeer {
 public:
  // Runs `serve` in the other process, with the socket that listens and its end of the control, until this
  // one is destroyed. Made before the process has threads: the peer is a fork of it. `prepare` gets the
  // socket before anybody can know its port.
  explicit ForkedPeer(const std::function<void(int listener, int control)>& serve,
                      const std::function<void(int listener)>& prepare = nullptr);
  ~ForkedPeer();
  ForkedPeer(const ForkedPeer&) = delete;
  ForkedPeer& operator=(const ForkedPeer&) = delete;

  std::uint16_t port() const { return port_; }
  int control() const { return control_; }

  // Writes to the control.
  template <typename Order>
  void tell(const Order& order) const {
    tell(&order, sizeof order);
  }

 private:
  void tell(const void* order, std::size_t size) const;

  pid_t process_ = -1;
  int control_ = -1;
  std::uint16_t port_ = 0;
};

// Serves every connection of the listener, in the order in which they were made, and the control: `onControl`
// gets the connections, -1 for those that are over, and returns false when all is; `onConnection` gets one
// that has something to read and returns false when that one is over.
void serveConnections(int listener, int control,
                      const std::function<bool(const std::vector<int>&)>& onControl,
                      const std::function<bool(int)>& onConnection);

// Sends all of it, unless the other side has gone.
void sendAll(int connection, const void* bytes, std::size_t size);

}  // namespace qvn::bench
