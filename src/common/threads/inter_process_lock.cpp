#include "common/threads/inter_process_lock.h"

#include "common/exception.h"
#include "platform/base/clock.h"

namespace qvn {

InterProcessLock::InterProcessLock(Mutex& mutex) : mutex_(mutex) {
  if (mutex_.getName().empty()) {
    throw Win32Exception("InterProcessLock has no name", 0, "InterProcessLock", 16);
  }
  mutex_.acquire(platform::kInfinite);
}

InterProcessLock::~InterProcessLock() { mutex_.release(); }

}  // namespace qvn
