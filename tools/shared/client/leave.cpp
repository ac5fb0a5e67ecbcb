#include "shared/client/leave.h"

#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <thread>

namespace qvn::cli {

void sayNow(const std::string& message) {
  const char* const clear = isatty(STDERR_FILENO) == 1 ? "\r\x1b[K" : "";
  std::cerr << clear + ("qvn: " + message + "\n") << std::flush;
}

void leave(const std::string& message, int exitCode) {
  sayNow(message);
  std::_Exit(exitCode);
}

void leaveAfter(platform::Milliseconds duration, const std::string& message, int exitCode) {
  std::thread([=] {
    platform::sleep(duration);
    leave(message, exitCode);
  }).detach();
}

}  // namespace qvn::cli
