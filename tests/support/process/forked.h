// Processes for tests of what several processes share. Fork before the test starts a thread.
#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>

namespace qvn::test {

// A child that runs `body` and exits with what it returns; killed at the end of the scope if still running.
class Forked {
 public:
  explicit Forked(const std::function<int()>& body) : pid_(fork()) {
    if (pid_ == 0) _exit(body());
  }
  ~Forked() {
    if (pid_ > 0) kill();
  }
  Forked(const Forked&) = delete;
  Forked& operator=(const Forked&) = delete;

  // The exit code, or 128 + n when signal n ended it.
  int wait() {
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
  }

  // Ends it without giving it a chance, and gives what wait() does.
  int kill() {
    ::kill(pid_, SIGKILL);
    return wait();
  }

 private:
  pid_t pid_;
};

// For expectations that change for good what cannot be changed back, or that are about such a process: it
// ends as programs do, within a minute.
inline void inOwnProcess(const std::function<void()>& expectations) {
  Forked child([&]() -> int {
    alarm(60);
    expectations();
    std::exit(testing::Test::HasFailure() ? 1 : 0);
  });
  EXPECT_EQ(child.wait(), 0) << "see what failed above";
}

// Numbers from one process to another, in order.
class Pipe {
 public:
  Pipe() {
    if (pipe(ends_) != 0) ends_[0] = ends_[1] = -1;
  }
  ~Pipe() {
    close(ends_[0]);
    close(ends_[1]);
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  void tell(int number) { static_cast<void>(!write(ends_[1], &number, sizeof number)); }

  // Blocks until the other side has told one.
  int hear() {
    int number = -1;
    static_cast<void>(!read(ends_[0], &number, sizeof number));
    return number;
  }

 private:
  int ends_[2];
};

}  // namespace qvn::test
