// A thread with an identifier and an exit code that others can wait for.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "platform/base/clock.h"
#include "platform/base/error.h"
#include "platform/threads/event.h"

namespace qvn::platform {

// What exitCode answers while the thread or process still runs.
inline constexpr std::uint32_t kStillActive = 259;

class QVN_PLATFORM_API ThreadHandle {
 public:
  // Starts a thread that runs `body`, with all signals blocked; its return value is the exit code.
  // `initialStackSize` is a hint for the memory committed at once, never a limit below what the system's
  // threads have. Null on failure, with `error` set. `body` must not throw.
  static std::unique_ptr<ThreadHandle> start(std::function<std::uint32_t()> body,
                                             std::uint32_t initialStackSize, ErrorCode& error);

  // Waits without limit for the thread's end.
  virtual ~ThreadHandle();

  virtual std::uint32_t id() const = 0;
  virtual std::uint32_t exitCode() const = 0;
  virtual WaitResult wait(Milliseconds timeout) = 0;

  // 0 is normal, above it more, below it less. False when the system does not grant it.
  virtual bool setPriority(std::int32_t priority) = 0;
};

// With true, from now on a few of the system's threads wait for the next start when their body has returned,
// as if they were new then. With false those that wait are ended, and none waits any more. Not on a thread
// that was started here.
QVN_PLATFORM_API void keepThreads(bool keep);

// Identifiers of the caller, never 0.
QVN_PLATFORM_API std::uint32_t currentThreadId();
QVN_PLATFORM_API std::uint32_t currentProcessId();

}  // namespace qvn::platform
