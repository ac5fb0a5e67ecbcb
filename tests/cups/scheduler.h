// A CUPS scheduler of one's own: the real cupsd with everything it keeps below one directory, listening on a
// socket there, and the real commands that talk to it. Ended with this object.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "support/process/child.h"

namespace qvn::test {

class Scheduler {
 public:
  // Starts it with the backend under test; its jobs find their printers in `home` (QVN_HOME). With a port it
  // shares its queues there, on loopback. Throws std::runtime_error when it is not installed or does not come
  // up.
  Scheduler(const std::filesystem::path& directory, const std::filesystem::path& home,
            std::uint16_t sharedAt = 0);
  ~Scheduler();
  Scheduler(const Scheduler&) = delete;
  Scheduler& operator=(const Scheduler&) = delete;

  // Runs one of the commands (lp, lpadmin, lpstat, cancel) against this scheduler.
  Result command(std::vector<std::string> arguments) const;

  // What the scheduler has written into its log.
  std::string log() const;

 private:
  std::filesystem::path directory_;
  std::unique_ptr<Child> process_;
};

}  // namespace qvn::test
