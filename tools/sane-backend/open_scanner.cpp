#include "open_scanner.h"

#include "shared/scan/error.h"
#include "shared/scan/settings.h"

namespace qvn::sane {

SANE_Status OpenScanner::control(SANE_Int option, SANE_Action action, void* value, SANE_Int* info) {
  if (state_ == State::Scanning && action != SANE_ACTION_GET_VALUE && !scanner_->cancelled()) {
    return SANE_STATUS_DEVICE_BUSY;
  }
  return options_.control(option, action, value, info);
}

SANE_Parameters OpenScanner::parameters() const {
  return state_ == State::Scanning ? pageParameters_ : parametersOf(options_.settings());
}

// The lock lasts for one page: a program that stays open between its scans must not keep the scanner from
// others.
void OpenScanner::end(State state) noexcept {
  state_ = state;
  try {
    scanner_->unlock();
  } catch (const scan::Error&) {
    // What is wrong with the scanner shows at the next page.
  }
}

void OpenScanner::start() {
  if (scanner_->cancelled()) {
    // The program did not read on after it had cancelled, or there was nothing to read.
    scanner_->drop();
    end(State::Idle);
  } else if (state_ == State::Scanning) {
    throw scan::Error(scan::Problem::Busy, "a page is in hand");
  }
  scanner_->clearCancel();
  nonBlocking_ = false;
  const scan::Settings settings = options_.settings();
  try {
    scanner_->lock();
    scanner_->apply(settings);
    scanner_->startPage();
  } catch (const scan::Error&) {
    end(State::Idle);
    throw;
  }
  pageParameters_ = parametersOf(settings);
  state_ = State::Scanning;
}

SANE_Status OpenScanner::read(SANE_Byte* data, SANE_Int size, SANE_Int* length) {
  *length = 0;
  switch (state_) {
    case State::Idle:
      return SANE_STATUS_INVAL;
    case State::Ended:
      return SANE_STATUS_EOF;
    case State::Cancelled:
      return SANE_STATUS_CANCELLED;
    case State::Scanning:
      break;
  }
  const std::span<std::uint8_t> buffer(data, static_cast<std::size_t>(size));
  try {
    const std::optional<std::size_t> count =
        nonBlocking_ ? scanner_->readAvailable(buffer) : scanner_->read(buffer);
    if (count == 0) {
      end(State::Ended);
      return SANE_STATUS_EOF;
    }
    *length = static_cast<SANE_Int>(count.value_or(0));
    return SANE_STATUS_GOOD;
  } catch (const scan::Error& error) {
    end(error.problem() == scan::Problem::Cancelled ? State::Cancelled : State::Idle);
    throw;
  }
}

SANE_Status OpenScanner::setNonBlocking(bool nonBlocking) {
  if (state_ != State::Scanning) return SANE_STATUS_INVAL;
  nonBlocking_ = nonBlocking;
  return SANE_STATUS_GOOD;
}

SANE_Status OpenScanner::selectDescriptor(SANE_Int* descriptor) const {
  if (state_ != State::Scanning) return SANE_STATUS_INVAL;
  *descriptor = scanner_->descriptor();
  return SANE_STATUS_GOOD;
}

}  // namespace qvn::sane
