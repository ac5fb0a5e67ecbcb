#include "shared/scan/scanner.h"

#include <string>

namespace qvn::scan {

namespace {

Error cancelledError() { return Error(Problem::Cancelled, "the scan was cancelled"); }

}  // namespace

Scanner::Scanner(std::uint32_t handle, std::chrono::milliseconds patience)
    : handle_(handle), patience_(patience), connection_(std::make_unique<Connection>(handle)) {}

Connection& Scanner::connection() {
  if (!connection_) connection_ = std::make_unique<Connection>(handle_);
  return *connection_;
}

void Scanner::startPage() {
  if (cancelled()) throw cancelledError();
  page_ = beginPage();
  waitForPage();
  if (cancelled()) fail(cancelledError());
  if (const auto error = page_->error()) fail(*error);
}

void Scanner::drop(Problem why) noexcept {
  // A delivery that waits for the reader would keep the device's answers from coming.
  if (page_) page_->pipe().leave();
  abort(why);
  page_.reset();
}

void Scanner::fail(const Error& error) {
  drop(error.problem());
  throw error;
}

void Scanner::waitForPage() {
  if (page_->pipe().wait(patience_)) return;
  fail(Error(Problem::Silent, "no block came from the scanner for " +
                                  std::to_string(std::chrono::ceil<std::chrono::seconds>(patience_).count()) +
                                  " s"));
}

std::optional<std::size_t> Scanner::take(std::span<std::uint8_t> buffer) {
  const PagePipe::Taken taken = page_->pipe().take(buffer);
  switch (taken.state) {
    case PagePipe::State::Some:
      return taken.count;
    case PagePipe::State::Nothing:
      return std::nullopt;
    case PagePipe::State::Cancelled:
      fail(cancelledError());
    case PagePipe::State::End:
      break;
  }
  if (const auto error = page_->error()) fail(*error);
  finishPage();
  page_.reset();
  return 0;
}

std::size_t Scanner::read(std::span<std::uint8_t> buffer) {
  for (;;) {
    if (const auto count = take(buffer)) return *count;
    waitForPage();
  }
}

}  // namespace qvn::scan
