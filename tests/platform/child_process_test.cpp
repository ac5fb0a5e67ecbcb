// Child processes: command lines, exit codes, what they inherit.
#include "platform/process/child_process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "platform/files/paths.h"
#include "support/manual_clock.h"

namespace qvn::platform {
namespace {

namespace fs = std::filesystem;

std::unique_ptr<ChildProcess> start(const std::string& commandLine) {
  ErrorCode error = kInvalidHandle;
  auto child = ChildProcess::start(commandLine, error);
  EXPECT_EQ(error, kSuccess) << commandLine;
  return child;
}

std::uint32_t run(const std::string& commandLine) {
  const auto child = start(commandLine);
  std::uint32_t code = kStillActive;
  if (child == nullptr) return code;
  EXPECT_EQ(child->wait(kInfinite), WaitResult::Signalled) << commandLine;
  EXPECT_EQ(child->exitCode(code), kSuccess) << commandLine;
  return code;
}

TEST(ChildProcess, AnswersTheExitCodeOfTheCommand) {
  EXPECT_EQ(run("true"), 0U);
  EXPECT_EQ(run("  false  "), 1U);
  EXPECT_EQ(run("sh -c \"exit 7\""), 7U);
  EXPECT_EQ(run("sh -c \"kill -9 $$\""), 128U + 9U);
}

TEST(ChildProcess, QuotesKeepBlanksTogether) {
  const fs::path directory = stateDirectory() / "with a blank";
  fs::create_directory(directory);
  std::ofstream(directory / "from here") << "content";
  EXPECT_EQ(run("cp  \"" + (directory / "from here").string() + "\"\t" + directory.parent_path().string() +
                "/with\" a \"blank/to-there"),
            0U);
  EXPECT_TRUE(fs::exists(directory / "to-there"));
  EXPECT_EQ(run("test \"\" = \"\""), 0U) << "empty words";
  EXPECT_EQ(run("test \"left open"), 0U);
}

TEST(ChildProcess, SaysWhyNothingWasStarted) {
  const fs::path plain = stateDirectory() / "plain";
  std::ofstream(plain) << "no program";
  const struct {
    std::string commandLine;
    ErrorCode code;
  } cases[] = {
      {"no-such-program-anywhere /s", kFileNotFound},
      {"/no/such/path", kFileNotFound},
      {plain.string(), kAccessDenied},
      {"", kInvalidParameter},
      {" \t ", kInvalidParameter},
      {"\"\" x", kInvalidParameter},
  };
  for (const auto& c : cases) {
    ErrorCode error = kSuccess;
    EXPECT_EQ(ChildProcess::start(c.commandLine, error), nullptr) << c.commandLine;
    EXPECT_EQ(error, c.code) << c.commandLine;
    EXPECT_EQ(lastError(), c.code) << c.commandLine;
  }
}

TEST(ChildProcess, InheritsNoHandleAndNoTerminal) {
  const int handle = open("/dev/null", O_RDONLY);  // without O_CLOEXEC
  ASSERT_GT(handle, 2);
  EXPECT_EQ(run("test -e /proc/self/fd/" + std::to_string(handle)), 1U);
  EXPECT_EQ(run("test -t 0"), 1U);
  EXPECT_EQ(run("test -e /proc/self/fd/1"), 0U);
  close(handle);
}

TEST(ChildProcess, ARunningOneAnswersSo) {
  test::ManualClock manual(test::ManualClock::Mode::AutoAdvance);
  const auto child = start("sleep 60");
  ASSERT_NE(child, nullptr);
  const auto pid = static_cast<pid_t>(child->id());
  std::uint32_t code = 0;
  EXPECT_EQ(child->exitCode(code), kSuccess);
  EXPECT_EQ(code, kStillActive);
  EXPECT_EQ(child->wait(15'000), WaitResult::TimedOut);
  EXPECT_EQ(manual.monotonicMilliseconds(), 15'000U);
  EXPECT_EQ(getsid(pid), pid);

  kill(pid, SIGTERM);
  EXPECT_EQ(child->wait(kInfinite), WaitResult::Signalled);
  EXPECT_EQ(child->exitCode(code), kSuccess);
  EXPECT_EQ(code, 128U + SIGTERM);
  EXPECT_EQ(kill(pid, 0), -1) << "collected";
}

TEST(ChildProcess, DroppingTheHandleLeavesItRunning) {
  const auto pid = static_cast<pid_t>(start("sleep 60")->id());
  EXPECT_EQ(kill(pid, SIGKILL), 0);
}

}  // namespace
}  // namespace qvn::platform
