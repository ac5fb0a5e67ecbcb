// A TCP connection to a device.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>

#include "net/endpoint.h"
#include "platform/base/unique_descriptor.h"
#include "shared/channel/channel.h"
#include "shared/channel/wake_up.h"

namespace qvn::ipv4 {

// The result code for a failed socket call.
std::uint32_t codeFromErrno(int error);

class TcpSocket : public shared::Channel {
 public:
  TcpSocket() = default;
  ~TcpSocket() override;

  // Once. 0, or why there is no connection: 1225, 1231, 1232, 1460 after `timeout` milliseconds, ...
  std::uint32_t connect(const Endpoint& endpoint, std::uint32_t timeout);

  // Keeps no more than about that many bytes waiting for the device to take them, so that sending goes at the
  // device's own pace.
  void limitUnsent(std::uint32_t bytes);

  // 64 when the device has ended the connection.
  int readable() const override { return fd_.get(); }
  void wait(std::chrono::steady_clock::time_point deadline) override;
  void interrupt() override { interrupted_.raise(); }
  std::uint32_t receive(std::span<std::uint8_t> room, std::size_t& received) override;
  std::uint32_t send(std::span<const std::uint8_t> bytes, std::uint32_t timeout, std::size_t& sent) override;
  void shutDown() override;

 private:
  std::uint32_t tryToConnect(const Endpoint& endpoint, std::uint32_t timeout);

  platform::UniqueDescriptor fd_;
  shared::WakeUp interrupted_;
};

}  // namespace qvn::ipv4
