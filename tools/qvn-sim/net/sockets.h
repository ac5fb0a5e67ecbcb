// Socket descriptors and the few calls that make them. All are non-blocking; failures throw system_error.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace sim {

class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int fd) : fd_(fd) {}
  Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  ~Descriptor();

  int get() const { return fd_; }
  bool isOpen() const { return fd_ >= 0; }
  void close();

 private:
  int fd_ = -1;
};

// Port 0 lets the system choose. `receiveBuffer` limits what the kernel takes ahead of the reader; 0 leaves
// it to the system.
Descriptor listenTcp(const std::string& address, std::uint16_t port, int receiveBuffer);
Descriptor bindUdp(const std::string& address, std::uint16_t port);
std::uint16_t localPort(const Descriptor& socket);

// The next waiting connection; not open when there is none.
Descriptor acceptTcp(const Descriptor& listener);

// Two ends of a connection within the process; with `keepsMessages` each one that is sent arrives by itself.
std::pair<Descriptor, Descriptor> socketPair(bool keepsMessages);

// The peer sees a reset instead of an orderly end.
void resetOnClose(const Descriptor& socket);

}  // namespace sim
