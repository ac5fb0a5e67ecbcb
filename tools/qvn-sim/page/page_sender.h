// Says what of a page is to be sent next, and has the faults that a page can have.
#pragma once

#include "base/bytes.h"
#include "faults/fault_switches.h"
#include "net/event_loop.h"
#include "page/page_stream.h"

namespace sim {

class PageSender {
 public:
  enum class Next : std::uint8_t {
    Send,       // send bytes()
    Status,     // send the status of the page now, although it goes on
    ReadError,  // tell of a read that failed
    Wait,       // ask again in a moment
    Silence,    // nothing comes any more
    Close,      // reset the connection
    Done,       // the page is over
  };

  PageSender(PageStream stream, FaultSwitches& faults);

  Next next();
  ByteView bytes() const { return bytes_; }
  // So many of bytes() were sent.
  void sent(std::size_t count);

  // Ends the page after the block that has begun.
  void abort();
  bool isAborted() const { return aborted_; }

  bool isBetweenBlocks() const { return stream_.isBetweenBlocks(); }
  // Whether all of it is sent, once it is over.
  bool isWhole() const { return !aborted_ && !hasNoData_; }
  // Whether Next::Status was given.
  bool hasToldStatus() const { return hasToldStatus_; }

 private:
  std::size_t allowance();

  PageStream stream_;
  FaultSwitches& faults_;
  ByteView bytes_;
  bool aborted_ = false;
  bool silent_ = false;
  bool hasToldStatus_ = false;
  bool hasToldReadError_ = false;
  bool hasNoData_ = false;
  EventLoop::Clock::time_point paidUntil_ =
      EventLoop::Clock::now();  // what was sent, at a slow device's rate
};

}  // namespace sim
