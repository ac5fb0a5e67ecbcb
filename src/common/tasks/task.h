// Task: one exchange with a device, built with what it needs, executed once and destroyed.
#pragma once

#include <cstdint>

namespace qvn {

// A task owns neither the device nor the connection it works on; whoever makes it keeps both alive.
class Task {
 public:
  Task() = default;
  Task(const Task&) = delete;
  Task& operator=(const Task&) = delete;
  virtual ~Task() = 0;

  // Runs the task on the calling thread, which a task with a worker thread blocks until that has ended.
  std::uint32_t execute() { return doExecute(); }

 protected:
  // Here: 1, for long-lived listeners that are never executed.
  virtual std::uint32_t doExecute();
};

}  // namespace qvn
