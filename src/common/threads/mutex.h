// A mutex, private or shared by name with other processes, and its scoped holders.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/base/access.h"
#include "platform/base/clock.h"
#include "platform/threads/mutex.h"

namespace qvn {

class Mutex {
 public:
  // Makes the mutex or opens the one of that name; throws Win32Exception when it cannot.
  Mutex(bool initialOwner, const std::string& name, bool everyoneAccess);
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;

  // True when the calling thread now holds it (once more). A time of 0 gives false without trying; taking it
  // over from a holder that died counts as holding it. Throws on failure.
  bool acquire(platform::Milliseconds timeout);

  // Undoes every hold of the calling thread; does nothing when it has none (any more). Throws on failure.
  void release();

  const std::string& getName() const { return name_; }

 private:
  void createMutex(bool initialOwner, platform::Access access);

  std::unique_ptr<platform::NamedMutex> mutex_;
  std::string name_;
  // Changed only by the holder; release() by another thread reads them.
  std::atomic<std::uint32_t> holdCount_{0};
  std::atomic<std::uint32_t> ownerThreadId_{0};
};

// Holds a mutex for a scope, if it could be had within the time; a time of 0 waits one millisecond. Its end
// never throws.
class [[nodiscard]] MutexLock {
 public:
  MutexLock(Mutex& mutex, platform::Milliseconds timeout);
  ~MutexLock();
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

  bool acquired() const { return acquired_; }

 private:
  Mutex& mutex_;
  bool acquired_;
};

}  // namespace qvn
