// Runs another program as a child process.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/base/clock.h"
#include "platform/process/child_process.h"

namespace qvn {

class Application {
 public:
  explicit Application(std::string commandLine);
  Application(const Application&) = delete;
  Application& operator=(const Application&) = delete;
  // Leaves a running process alone.
  ~Application();

  // Creates the process; throws Win32Exception when that fails.
  void launch();
  // Creates the process and waits until it is seen running: up to 100 polls, 50 ms apart. One that has ended
  // by then is no error.
  void start();

  // For the next launch, and for the process that runs now: false when it does not take the class. The normal
  // one is all that a process can have here; a launch with another fails with 87.
  static constexpr std::uint32_t kNormalPriority = 32;
  bool setPriorityClass(std::uint32_t priorityClass);
  bool isRunning() const;
  bool waitFor(platform::Milliseconds timeout);

 private:
  std::string commandLine_;
  std::unique_ptr<platform::ChildProcess> process_;
  std::uint32_t priorityClass_ = kNormalPriority;
  platform::Milliseconds pollInterval_ = 50;
};

}  // namespace qvn
