#include "support/other_threads.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

namespace qvn::test {
namespace {

// One look sees the threads one after the other: a thread may let go of one that has been looked at.
constexpr int kLooks = 3;

}  // namespace

bool othersCompute() {
  const std::string self = std::to_string(gettid());
  std::error_code error;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task", error)) {
    if (task.path().filename() == self) continue;
    std::string status;
    std::getline(std::ifstream(task.path() / "stat"), status);
    // The state is the letter after the name, which is in parentheses.
    const std::size_t nameEnd = status.rfind(") ");
    if (nameEnd == std::string::npos) continue;
    if (const char state = status[nameEnd + 2]; state == 'R' || state == 'D') return true;
  }
  return false;
}

void waitForOthersToRest() {
  for (int looks = 0; looks < kLooks; looks = othersCompute() ? 0 : looks + 1) std::this_thread::yield();
}

}  // namespace qvn::test
