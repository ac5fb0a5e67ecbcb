// A child process, started from a command line.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/base/clock.h"
#include "platform/base/error.h"
#include "platform/threads/event.h"
#include "platform/threads/thread.h"

namespace qvn::platform {

class QVN_PLATFORM_API ChildProcess {
 public:
  // Starts the program named by the first word of `commandLine` (one installed with this layer if there is
  // one of that name, else searched as the shell does) with the other words as arguments; double quotes keep
  // blanks together. The child has no terminal and inherits the caller's priority, environment and directory,
  // none of its handles. Null on failure, with `error` set (2 when there
  // is no such program).
  static std::unique_ptr<ChildProcess> start(const std::string& commandLine, ErrorCode& error);
  // Leaves a running child alone.
  virtual ~ChildProcess();

  virtual std::uint32_t id() const = 0;

  // kStillActive while it runs; a child ended by signal n gives 128 + n.
  virtual ErrorCode exitCode(std::uint32_t& code) = 0;
  virtual WaitResult wait(Milliseconds timeout) = 0;
};

}  // namespace qvn::platform
