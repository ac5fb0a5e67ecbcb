// The bytes of a page on their way from the thread that delivers them to the one that reads them. It is a
// pipe: of a fixed size, so that a slow reader slows the device down, and with a descriptor to wait for. Both
// sides give up when the scan is cancelled.
#pragma once

#include <chrono>
#include <cstdint>
#include <span>

#include "shared/scan/cancel_signal.h"

namespace qvn::scan {

class PagePipe {
 public:
  // Throws std::system_error when the system gives no pipe.
  explicit PagePipe(const CancelSignal& cancel);
  ~PagePipe();
  PagePipe(const PagePipe&) = delete;
  PagePipe& operator=(const PagePipe&) = delete;

  // The delivering side. `put` waits while the pipe is full, and drops the bytes once the scan is cancelled
  // or the reader has gone.
  void put(std::span<const std::uint8_t> bytes);
  void end();

  // The reading side.
  enum class State { Some, Nothing, End, Cancelled };
  struct Taken {
    State state;
    std::size_t count;  // with State::Some, at least 1
  };
  // Takes what there is, without waiting.
  Taken take(std::span<std::uint8_t> buffer);
  // Waits until there is something to take, the end included, or the scan is cancelled. False when the time
  // was up before.
  bool wait(std::chrono::milliseconds limit) const;
  // Can be read from when there is something to take.
  int descriptor() const { return readEnd_; }
  // Nothing will be taken any more.
  void leave() noexcept { left_.raise(); }

 private:
  const CancelSignal& cancel_;
  CancelSignal left_;
  int readEnd_ = -1;
  int writeEnd_ = -1;
};

}  // namespace qvn::scan
