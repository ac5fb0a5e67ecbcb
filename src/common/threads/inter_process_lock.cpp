#include "common/threads/inter_process_lock.h"

#include "common/exception.h"
#include "platform/base/clock.h"

namespace qvn {
namespace {

Mutex& named(Mutex& mutex) {
  if (mutex.getName().empty()) {
    throw Win32Exception("InterProcessLock has no name", 0, "InterProcessLock", 16);
  }
  return mutex;
}

}  // namespace

InterProcessLock::InterProcessLock(Mutex& mutex) : lock_(named(mutex), platform::kInfinite) {}

}  // namespace qvn
