#include "startup/programs.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace qvn::bench {
namespace {

constexpr int kPatience = 60000;  // ms

void check(int error, const std::string& what) {
  if (error != 0) throw std::system_error(error, std::generic_category(), what);
}

// A pipe's reading and writing end.
std::pair<int, int> makePipe() {
  int ends[2];
  check(pipe2(ends, O_CLOEXEC) == 0 ? 0 : errno, "pipe2");
  return {ends[0], ends[1]};
}

pid_t start(const std::vector<std::string>& command, int input, int output) {
  std::vector<char*> arguments;
  for (const std::string& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  check(posix_spawn_file_actions_init(&actions), "posix_spawn_file_actions_init");
  posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  pid_t id = -1;
  const int error = posix_spawn(&id, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  check(error, command[0]);
  return id;
}

}  // namespace

Programs::Programs(const std::vector<std::string>& command, int count) : name_(command[0]) {
  // All read from one pipe, which nobody writes to, and write to one other.
  const auto [input, go] = makePipe();
  const auto [output, told] = makePipe();
  input_ = go;
  output_ = output;
  try {
    for (int i = 0; i < count; ++i) ids_.push_back(start(command, input, told));
  } catch (...) {
    close(input);
    close(told);
    end();
    throw;
  }
  close(input);
  close(told);
}

Programs::~Programs() { end(); }

void Programs::awaitAll() {
  for (std::size_t heard = 0; heard < ids_.size();) {
    const ssize_t told = hear();
    if (told <= 0) throw std::runtime_error(name_ + (told == 0 ? " failed" : " does not get on"));
    heard += static_cast<std::size_t>(told);
  }
}

void Programs::go() {
  if (input_ >= 0) close(std::exchange(input_, -1));
}

double Programs::memoryOfFirst(const std::string& name) const {
  std::ifstream figures("/proc/" + std::to_string(ids_.front()) + "/smaps_rollup");
  for (std::string word; figures >> word;) {
    double size = 0;
    if (word == name + ":" && figures >> size) return size;
  }
  throw std::runtime_error("/proc/PID/smaps_rollup does not tell " + name);
}

ssize_t Programs::hear() const {
  pollfd entry{output_, POLLIN, 0};
  char bytes[64];
  return poll(&entry, 1, kPatience) == 1 ? read(output_, bytes, sizeof bytes) : -1;
}

void Programs::end() {
  go();
  while (hear() > 0) {
  }
  for (const pid_t id : ids_) {
    kill(id, SIGKILL);  // It has ended, but for one that hangs.
    waitpid(id, nullptr, 0);
  }
  close(output_);
}

}  // namespace qvn::bench
