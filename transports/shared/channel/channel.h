// The way to one part of a device and back, for as long as it lasts: a connection, or an interface that was
// claimed.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>

namespace qvn::shared {

class Channel {
 public:
  Channel() = default;
  Channel(const Channel&) = delete;
  Channel& operator=(const Channel&) = delete;
  // What was sent still reaches the device.
  virtual ~Channel() = default;

  // A descriptor that is readable when there is something to receive, or the channel has ended.
  virtual int readable() const = 0;

  // From now on what comes is somebody's who waits by himself, and need not make the descriptor readable; or
  // it does again. False when the descriptor knows no difference. Any thread.
  virtual bool keepQuiet(bool /*quiet*/) { return false; }

  // Returns when there is something to receive or the channel has ended, at the deadline, or once after an
  // interrupt. One thread at a time.
  virtual void wait(std::chrono::steady_clock::time_point deadline) = 0;
  // Ends the wait, or the next one. Any thread.
  virtual void interrupt() = 0;

  // Takes what is there without waiting: 0 with how much that was, also nothing; else the code that the
  // channel has ended with. One thread at a time.
  virtual std::uint32_t receive(std::span<std::uint8_t> room, std::size_t& received) = 0;

  // Sends all of it: 0, or why not with what went out in `sent`. 1460 when the device has taken nothing for
  // `timeout` milliseconds; what is left may be sent later. With 0 it is not waited for, or hardly. One
  // thread at a time.
  virtual std::uint32_t send(std::span<const std::uint8_t> bytes, std::uint32_t timeout,
                             std::size_t& sent) = 0;

  // Has the device drop what it was sent and has not used yet, where it can be told that. 0, or why it was
  // not.
  virtual std::uint32_t flush() { return 0; }

  // Ends the channel for both sides. Any thread; whoever waits on it wakes up.
  virtual void shutDown() = 0;
};

}  // namespace qvn::shared
