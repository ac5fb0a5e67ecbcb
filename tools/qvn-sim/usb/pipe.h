// An endpoint of the device, other than the one for control requests, with the transfers that wait for it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>

#include "usb/transfer.h"

namespace sim::usb {

// The longest packet of every bulk endpoint.
inline constexpr std::size_t kBulkPacket = 512;

// How many bytes are in the packets that bring the first `count` bytes of a transfer.
inline std::size_t wholePackets(std::size_t count, std::size_t length) {
  return std::min((count + kBulkPacket - 1) / kBulkPacket * kBulkPacket, length);
}

class Pipe {
 public:
  // Gets each transfer that has ended; may have others forgotten.
  using OnDone = std::function<void(Transfer&&)>;

  explicit Pipe(const OnDone& onDone) : onDone_(onDone) {}
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  virtual ~Pipe() = default;

  // Also may end it before this returns.
  void submit(Transfer transfer);
  // The transfer as far as it got; nothing when it has ended.
  std::optional<Transfer> cancel(ConnectionId host, std::uint32_t sequence);
  // Drops what the host has waiting, as if it had never come.
  void forget(ConnectionId host);

  // Until clearHalt every transfer ends as a stall, those that wait too.
  void halt();
  void clearHalt();
  bool isHalted() const { return isHalted_; }

  // As at the beginning; what waits ends as `Shutdown`.
  void reset();

  // Serves the transfers that wait as far as that is possible now.
  virtual void serve() = 0;
  // Forgets what is on its way through the endpoint.
  virtual void discard() = 0;

 protected:
  bool hasWaiting() const { return !isHalted_ && !waiting_.empty(); }
  // The transfer whose turn it is, while there is one.
  Transfer& current() { return waiting_.front(); }
  void finishCurrent(Status status);

 private:
  void endAll(Status status);

  const OnDone& onDone_;
  std::deque<Transfer> waiting_;
  bool isHalted_ = false;
};

}  // namespace sim::usb
