#include "support/simulator/simulator_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

extern char** environ;

namespace qvn::test {
namespace {

constexpr int kPatience = 10000;

void makePipe(int (&ends)[2]) {
  if (pipe2(ends, O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe2");
}

pid_t spawnSimulator(const std::vector<std::string>& arguments, int input, int output) {
  std::vector<std::string> words = {QVN_SIM_PATH};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  argv.reserve(words.size() + 1);
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  if (input >= 0) posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  if (output >= 0) posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  pid_t pid = -1;
  const int error = posix_spawn(&pid, QVN_SIM_PATH, &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) throw std::system_error(error, std::generic_category(), QVN_SIM_PATH);
  return pid;
}

int reap(pid_t pid) {
  int status = 0;
  while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace

SimulatorProcess::SimulatorProcess(std::vector<std::string> arguments, bool endsWithTest) {
  if (endsWithTest) arguments.emplace_back("--quit-on-eof");
  ::signal(SIGPIPE, SIG_IGN);
  int input[2];
  int output[2];
  makePipe(input);
  makePipe(output);
  pid_ = spawnSimulator(arguments, input[0], output[1]);
  close(input[0]);
  close(output[1]);
  input_ = input[1];
  output_ = output[0];
  ready_ = nextLine();
}

SimulatorProcess::~SimulatorProcess() {
  if (pid_ >= 0) {
    kill(pid_, SIGTERM);
    wait();
  }
  closeInput();
  close(output_);
}

nlohmann::json SimulatorProcess::command(const std::string& line) {
  const std::string text = line + "\n";
  if (write(input_, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
    throw std::runtime_error("the simulator takes no commands");
  }
  return nextLine();
}

nlohmann::json SimulatorProcess::nextLine() {
  std::size_t end;
  while ((end = pending_.find('\n')) == std::string::npos) {
    pollfd entry{output_, POLLIN, 0};
    if (poll(&entry, 1, kPatience) == 0) throw std::runtime_error("the simulator says nothing");
    char buffer[4096];
    const ssize_t got = read(output_, buffer, sizeof buffer);
    if (got == 0) throw std::runtime_error("the simulator has ended");
    if (got > 0) pending_.append(buffer, static_cast<std::size_t>(got));
  }
  const std::string line = pending_.substr(0, end);
  pending_.erase(0, end + 1);
  return nlohmann::json::parse(line);
}

void SimulatorProcess::closeInput() {
  if (input_ >= 0) close(input_);
  input_ = -1;
}

void SimulatorProcess::signal(int number) { kill(pid_, number); }

int SimulatorProcess::wait() {
  const pid_t pid = pid_;
  pid_ = -1;
  return reap(pid);
}

int runSimulator(const std::vector<std::string>& arguments) {
  const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
  const pid_t pid = spawnSimulator(arguments, nowhere, nowhere);
  close(nowhere);
  return reap(pid);
}

}  // namespace qvn::test
