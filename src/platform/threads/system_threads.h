// The system's threads, on which runs take place. A few wait for the next run when one is over, since making
// a thread takes longer than many an exchange with a device.
#pragma once

#include <cstddef>
#include <memory>

#include "platform/base/error.h"
#include "platform/threads/thread_run.h"

namespace qvn::platform {

// Begins the run on a thread that waits, or on a new one with at least so large a stack. 0, or why there is
// none.
ErrorCode begin(const std::shared_ptr<ThreadRun>& run, std::size_t stackSize);

// Ends the threads that wait, and with them what thread-local state they have. Not in a run.
void endWaitingThreads();

}  // namespace qvn::platform
