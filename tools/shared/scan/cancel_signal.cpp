#include "shared/scan/cancel_signal.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>

namespace qvn::scan {

CancelSignal::CancelSignal() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (descriptor_ < 0) {
    throw std::system_error(errno, std::generic_category(), "cannot make an event descriptor");
  }
}

CancelSignal::~CancelSignal() { close(descriptor_); }

void CancelSignal::raise() noexcept {
  const int savedError = errno;
  raised_.store(true);
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(descriptor_, &one, sizeof one);
  errno = savedError;
}

void CancelSignal::clear() noexcept {
  std::uint64_t count = 0;
  [[maybe_unused]] const ssize_t got = read(descriptor_, &count, sizeof count);
  raised_.store(false);
}

}  // namespace qvn::scan
