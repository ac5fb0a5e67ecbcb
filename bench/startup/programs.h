// Programs started for a measurement, which keep in step by startup/progress.h.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace qvn::bench {

class Programs {
 public:
  // Starts the program so many times. Throws std::exception when it cannot.
  Programs(const std::vector<std::string>& command, int count);
  // Lets them go on to their ends and waits for these; ends what is still there after a minute.
  ~Programs();
  Programs(const Programs&) = delete;
  Programs& operator=(const Programs&) = delete;

  // Waits until each has told that it has got somewhere. Throws std::runtime_error when one has ended instead
  // or nothing is heard for a minute.
  void awaitAll();
  // Lets all go on, at once.
  void go();

  // A figure of the first one's memory in KiB, as /proc/PID/smaps_rollup names it.
  double memoryOfFirst(const std::string& name) const;

 private:
  // How many bytes have come; 0 when all have ended, less when nothing comes for a minute.
  ssize_t hear() const;
  void end();

  std::string name_;
  std::vector<pid_t> ids_;
  int input_ = -1;
  int output_ = -1;
};

}  // namespace qvn::bench
