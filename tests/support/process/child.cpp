#include "support/process/child.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <stdexcept>

namespace qvn::test {

namespace {

constexpr std::chrono::seconds kLimit{60};

void closeOnce(int& descriptor) {
  if (descriptor >= 0) close(descriptor);
  descriptor = -1;
}

std::pair<int, int> makePipe() {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("cannot make a pipe");
  return {ends[0], ends[1]};
}

}  // namespace

Child::Child(const std::vector<std::string>& command,
             const std::vector<std::pair<std::string, std::string>>& environment) {
  std::vector<char*> arguments;
  for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  ::signal(SIGPIPE, SIG_IGN);
  auto [inputRead, inputWrite] = makePipe();
  auto [outputRead, outputWrite] = makePipe();
  auto [errorRead, errorWrite] = makePipe();
  input_ = inputWrite;
  outputPipe_ = outputRead;
  errorPipe_ = errorRead;
  id_ = fork();
  if (id_ == 0) {
    dup2(inputRead, STDIN_FILENO);
    dup2(outputWrite, STDOUT_FILENO);
    dup2(errorWrite, STDERR_FILENO);
    for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
    execv(arguments[0], arguments.data());
    _exit(127);
  }
  close(inputRead);
  close(outputWrite);
  close(errorWrite);
  if (id_ < 0) throw std::runtime_error("cannot start " + command.front());
}

Child::~Child() {
  if (id_ > 0) {
    kill(id_, SIGKILL);
    waitpid(id_, nullptr, 0);
  }
  closeOnce(input_);
  closeOnce(outputPipe_);
  closeOnce(errorPipe_);
}

void Child::write(const std::string& text) {
  std::size_t at = 0;
  while (at < text.size()) {
    const ssize_t count = ::write(input_, text.data() + at, text.size() - at);
    if (count < 0 && errno != EINTR) return;  // the program does not listen
    at += count > 0 ? static_cast<std::size_t>(count) : 0;
  }
}

void Child::closeInput() { closeOnce(input_); }

void Child::signal(int number) const {
  if (id_ > 0) kill(id_, number);
}

bool Child::readSome() {
  pollfd entries[] = {{outputPipe_, POLLIN, 0}, {errorPipe_, POLLIN, 0}};
  if (outputPipe_ < 0 && errorPipe_ < 0) return false;
  if (poll(entries, 2, static_cast<int>(std::chrono::milliseconds(kLimit).count())) <= 0) return false;
  const std::pair<int*, std::string*> pipes[] = {{&outputPipe_, &output_}, {&errorPipe_, &errors_}};
  for (std::size_t i = 0; i < 2; ++i) {
    if (entries[i].revents == 0) continue;
    char buffer[65536];
    const ssize_t count = read(*pipes[i].first, buffer, sizeof buffer);
    if (count > 0) {
      pipes[i].second->append(buffer, static_cast<std::size_t>(count));
    } else {
      closeOnce(*pipes[i].first);
    }
  }
  return true;
}

std::optional<std::string> Child::readLine() { return readLine(outputPipe_, output_); }

std::optional<std::string> Child::readErrorLine() { return readLine(errorPipe_, errors_); }

std::optional<std::string> Child::readLine(const int& pipe, std::string& text) {
  for (;;) {
    const std::size_t end = text.find('\n');
    if (end != std::string::npos) {
      std::string line = text.substr(0, end);
      text.erase(0, end + 1);
      return line;
    }
    if (pipe < 0 || !readSome()) return std::nullopt;
  }
}

int Child::wait() {
  const auto deadline = std::chrono::steady_clock::now() + kLimit;
  while (outputPipe_ >= 0 || errorPipe_ >= 0) {
    if (!readSome() || std::chrono::steady_clock::now() > deadline) return 999;
  }
  int status = 0;
  if (id_ < 0 || waitpid(id_, &status, 0) != id_) return 999;
  id_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

Result run(const std::vector<std::string>& command, const std::string& input,
           const std::vector<std::pair<std::string, std::string>>& environment) {
  Child child(command, environment);
  child.write(input);
  child.closeInput();
  const int exitCode = child.wait();
  return {exitCode, child.output(), child.errors()};
}

Result qvn(std::vector<std::string> arguments, const std::string& input) {
  arguments.insert(arguments.begin(), QVN_COMMAND);
  return run(arguments, input);
}

}  // namespace qvn::test
