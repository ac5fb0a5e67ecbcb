// Serialises work across the processes that use the library.
#pragma once

#include "common/threads/mutex.h"

namespace qvn {

// Holds a named mutex for a scope, waiting for it without limit: keep the scope short.
class [[nodiscard]] InterProcessLock {
 public:
  // Throws Win32Exception with code 0 when the mutex has no name.
  explicit InterProcessLock(Mutex& mutex);

 private:
  MutexLock lock_;
};

}  // namespace qvn
