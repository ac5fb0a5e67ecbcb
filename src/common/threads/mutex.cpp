#include "common/threads/mutex.h"

#include "common/exception.h"
#include "platform/base/error.h"
#include "platform/threads/event.h"
#include "platform/threads/thread.h"

namespace qvn {

Mutex::Mutex(bool initialOwner, const std::string& name, bool everyoneAccess) : name_(name) {
  createMutex(initialOwner, {.everyone = everyoneAccess, .inheritable = false});
}

void Mutex::createMutex(bool initialOwner, platform::Access access) {
  platform::ErrorCode error = platform::kSuccess;
  mutex_ = platform::NamedMutex::create(name_, initialOwner, access, error);
  if (!mutex_) throw Win32Exception("Mutex::createMutex() CreateMutex failed", error, "Mutex", 140);
  if (initialOwner) {
    ownerThreadId_ = platform::currentThreadId();
    holdCount_ = 1;
  }
}

bool Mutex::acquire(platform::Milliseconds timeout) {
  if (timeout == 0) return false;
  const platform::WaitResult result = mutex_->acquire(timeout);
  switch (result) {
    case platform::WaitResult::Signalled:
    case platform::WaitResult::Abandoned: {
      // What the holder before had counted is void when it did not give it up itself.
      const std::uint32_t caller = platform::currentThreadId();
      const bool again = result == platform::WaitResult::Signalled && ownerThreadId_ == caller;
      holdCount_ = again ? holdCount_ + 1 : 1;
      ownerThreadId_ = caller;
      return true;
    }
    case platform::WaitResult::TimedOut:
      return false;
    case platform::WaitResult::Failed:
      break;
  }
  throw Win32Exception("Mutex::acquire() WaitForSingleObject failed", platform::lastError(), "Mutex", 123);
}

void Mutex::release() {
  if (ownerThreadId_ != platform::currentThreadId()) return;
  // The last release lets another thread in, which then counts its own holds from 0.
  for (std::uint32_t holds = holdCount_; holds != 0; --holds) {
    holdCount_ = holds - 1;
    if (holds == 1) ownerThreadId_ = 0;
    const platform::ErrorCode error = mutex_->release();
    if (error == platform::kNotOwner) return;  // not held any more
    if (error != platform::kSuccess) {
      throw Win32Exception("Mutex::release() ReleaseMutex failed", error, "Mutex", 90);
    }
  }
}

MutexLock::MutexLock(Mutex& mutex, platform::Milliseconds timeout)
    : mutex_(mutex), acquired_(mutex.acquire(timeout == 0 ? 1 : timeout)) {}

MutexLock::~MutexLock() {
  if (!acquired_) return;
  try {
    mutex_.release();
  } catch (const Win32Exception&) {
    // What is not released now is void with the thread's end.
  }
}

}  // namespace qvn
