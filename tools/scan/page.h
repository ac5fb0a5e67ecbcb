// A page that a scanner sends: the transport's thread hands in what the device sends, another thread reads.
#pragma once

#include <mutex>
#include <optional>

#include "error.h"
#include "page_assembler.h"
#include "page_pipe.h"

namespace qvn::scan {

class Page {
 public:
  Page(std::uint64_t bytes, const CancelSignal& cancel) : assembler_(bytes), pipe_(cancel) {}

  // The delivering thread: takes one command. What comes after the end, good or bad, is dropped.
  void deliver(Bytes command) noexcept;

  // The reading thread. Bytes of a page that turns out wrong may be read before its error shows.
  PagePipe& pipe() { return pipe_; }
  // Once the pipe has ended: why the page is not complete.
  std::optional<Error> error() const;

 private:
  void end(std::optional<Error> error);

  PageAssembler assembler_;
  PagePipe pipe_;
  bool ended_ = false;  // the delivering thread's
  mutable std::mutex mutex_;
  std::optional<Error> error_;  // guarded by mutex_
};

}  // namespace qvn::scan
