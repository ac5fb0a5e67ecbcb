// Ways out of a wait that nothing else ends. The process ends without cleaning up: what the library holds for
// it ends with it, as after a crash.
#pragma once

#include <string>

#include "platform/base/clock.h"
#include "shared/client/interrupt.h"

namespace qvn::cli {

inline constexpr int kFailedExit = 1;
inline constexpr int kWrongUsageExit = 2;
inline constexpr int kInterruptedExit = 130;

// "qvn: MESSAGE" on standard error, over a progress bar that may be there. From any thread.
void sayNow(const std::string& message);

// The same, and the end. From any thread.
[[noreturn]] void leave(const std::string& message, int exitCode);

// While this lives, a request to stop ends the process: for operations that hold nothing of the device's yet.
class LeaveOnInterrupt {
 public:
  explicit LeaveOnInterrupt(const std::string& message)
      : onInterrupt_([message] { leave(message, kInterruptedExit); }) {}

 private:
  OnInterrupt onInterrupt_;
};

// Ends the process with that message when it is still there after so long.
void leaveAfter(platform::Milliseconds duration, const std::string& message, int exitCode);

}  // namespace qvn::cli
