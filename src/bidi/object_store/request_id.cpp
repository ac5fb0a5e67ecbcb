#include "bidi/object_store/request_id.h"

#include "platform/base/clock.h"

namespace qvn {

std::uint32_t RequestIds::next() {
  const std::scoped_lock lock(lock_);
  while (next_ == 0) {
    next_ = platform::tickCount() % 500 * 1000;
    if (next_ == 0) platform::sleep(1);
  }
  return next_++;
}

std::uint32_t nextRequestId() {
  static RequestIds ids;
  return ids.next();
}

}  // namespace qvn
