#include "page.h"

#include <utility>

namespace qvn::scan {

void Page::deliver(Bytes command) noexcept {
  if (ended_) return;
  try {
    pipe_.put(assembler_.take(command));
    if (assembler_.complete()) end(std::nullopt);
  } catch (const Error& error) {
    end(error);
  } catch (const std::exception& error) {
    end(Error(Problem::Failed, error.what()));
  }
}

std::optional<Error> Page::error() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return error_;
}

// The reader asks for the error when it sees the pipe's end.
void Page::end(std::optional<Error> error) {
  ended_ = true;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    error_ = std::move(error);
  }
  pipe_.end();
}

}  // namespace qvn::scan
