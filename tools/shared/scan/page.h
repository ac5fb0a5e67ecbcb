// A page that a scanner sends: one thread puts its bytes in, another reads them.
#pragma once

#include <mutex>
#include <optional>

#include "shared/scan/bytes.h"
#include "shared/scan/cancel_signal.h"
#include "shared/scan/error.h"
#include "shared/scan/page_pipe.h"

namespace qvn::scan {

class Page {
 public:
  explicit Page(const CancelSignal& cancel) : pipe_(cancel) {}

  // The delivering thread. What comes after the end, good or bad, is dropped.
  void put(Bytes bytes);
  void end(std::optional<Error> error = std::nullopt);
  bool ended() const { return ended_; }

  // The reading thread. Bytes of a page that turns out wrong may be read before its error shows.
  PagePipe& pipe() { return pipe_; }
  // Once the pipe has ended: why the page is not complete.
  std::optional<Error> error() const;

 private:
  PagePipe pipe_;
  bool ended_ = false;  // the delivering thread's
  mutable std::mutex mutex_;
  std::optional<Error> error_;  // guarded by mutex_
};

}  // namespace qvn::scan
