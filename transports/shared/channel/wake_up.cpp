#include "shared/channel/wake_up.h"

#include <sys/eventfd.h>

#include <cerrno>

#include "platform/base/error.h"
#include "qvn/result_codes.h"

namespace qvn::shared {

std::uint32_t WakeUp::open() {
  event_ = platform::UniqueDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  return event_ ? QRN_ERROR_SUCCESS : platform::errorFromErrno(errno);
}

void WakeUp::raise() { eventfd_write(event_.get(), 1); }

void WakeUp::take() {
  eventfd_t raised = 0;
  eventfd_read(event_.get(), &raised);
}

}  // namespace qvn::shared
