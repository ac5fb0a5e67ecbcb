#include "shared/scan/page.h"

#include <utility>

namespace qvn::scan {

void Page::put(Bytes bytes) {
  if (!ended_) pipe_.put(bytes);
}

// The reader asks for the error when it sees the pipe's end.
void Page::end(std::optional<Error> error) {
  if (ended_) return;
  ended_ = true;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    error_ = std::move(error);
  }
  pipe_.end();
}

std::optional<Error> Page::error() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return error_;
}

}  // namespace qvn::scan
