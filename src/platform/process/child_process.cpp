#include "platform/process/child_process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "platform/base/failure.h"
#include "platform/process/module.h"
#include "platform/threads/all_signals_blocked.h"

namespace qvn::platform {
namespace {

constexpr std::uint32_t kSignalBase = 128;

// What the handle of a child shares with the thread that waits for its end.
struct ChildState {
  std::mutex mutex;
  std::condition_variable changed;
  std::optional<int> spawnResult;  // 0, or an errno value; none before the child is started
  pid_t pid = 0;
  bool hasEnded = false;
  std::optional<std::uint32_t> exitCode;  // none when somebody else in this process collected it
};

void collect(ChildState& state) {
  const pid_t pid = state.pid;
  siginfo_t info{};
  while (waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
  }
  // Until it is collected the id names no other process; under the lock nobody uses it afterwards.
  const std::lock_guard guard(state.mutex);
  int status = 0;
  if (waitpid(pid, &status, WNOHANG) == pid) {
    state.exitCode = WIFSIGNALED(status) ? kSignalBase + static_cast<std::uint32_t>(WTERMSIG(status))
                                         : static_cast<std::uint32_t>(WEXITSTATUS(status));
  }
  state.hasEnded = true;
  state.changed.notify_all();
}

class NativeChildProcess final : public ChildProcess {
 public:
  explicit NativeChildProcess(std::shared_ptr<ChildState> state) : state_(std::move(state)) {}

  std::uint32_t id() const override { return static_cast<std::uint32_t>(state_->pid); }

  ErrorCode exitCode(std::uint32_t& code) override {
    const std::lock_guard guard(state_->mutex);
    if (state_->hasEnded && !state_->exitCode) return fail(kInvalidHandle);
    code = state_->exitCode.value_or(kStillActive);
    return kSuccess;
  }

  WaitResult wait(Milliseconds timeout) override {
    std::unique_lock lock(state_->mutex);
    const bool ended = clock().wait(lock, state_->changed, timeout, [&] { return state_->hasEnded; });
    return ended ? WaitResult::Signalled : WaitResult::TimedOut;
  }

 private:
  const std::shared_ptr<ChildState> state_;
};

// Words are separated by blanks or tabs; double quotes keep blanks and may stand for an empty word.
std::vector<std::string> splitWords(std::string_view line) {
  std::vector<std::string> words;
  bool inWord = false;
  bool quoted = false;
  for (const char c : line) {
    if (c == '\0') break;
    if (!quoted && (c == ' ' || c == '\t')) {
      inWord = false;
      continue;
    }
    if (!inWord) words.emplace_back();
    inWord = true;
    if (c == '"') {
      quoted = !quoted;
    } else {
      words.back() += c;
    }
  }
  return words;
}

// The system's own programs come before any of the same name that the search path has.
std::string programFile(const std::string& name) {
  std::error_code ignored;
  const std::filesystem::path own = installedDirectory() / name;
  const bool bare = name.find('/') == std::string::npos;
  return bare && std::filesystem::is_regular_file(own, ignored) ? own.string() : name;
}

class SpawnAttributes {
 public:
  SpawnAttributes() {
    posix_spawnattr_init(&attributes_);
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes_, &none);
    posix_spawnattr_setsigdefault(&attributes_, &all);
    posix_spawnattr_setflags(&attributes_,
                             POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    posix_spawn_file_actions_init(&actions_);
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
      posix_spawn_file_actions_addopen(&actions_, standard, "/dev/null", O_RDWR, 0);
    }
    posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
  }
  ~SpawnAttributes() {
    posix_spawn_file_actions_destroy(&actions_);
    posix_spawnattr_destroy(&attributes_);
  }
  SpawnAttributes(const SpawnAttributes&) = delete;
  SpawnAttributes& operator=(const SpawnAttributes&) = delete;

  int spawn(std::vector<std::string>& words, pid_t& pid) const {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    return posix_spawnp(&pid, arguments.front(), &actions_, &attributes_, arguments.data(), environ);
  }

 private:
  posix_spawnattr_t attributes_;
  posix_spawn_file_actions_t actions_;
};

// Starts the child and waits for its end, on a thread of its own that nobody has to join.
void runChild(const std::shared_ptr<ChildState>& state, std::vector<std::string> words) {
  {
    pid_t pid = 0;
    const int result = SpawnAttributes().spawn(words, pid);
    const std::lock_guard guard(state->mutex);
    state->pid = pid;
    state->spawnResult = result;
    state->changed.notify_all();
    if (result != 0) return;
  }
  collect(*state);
}

}  // namespace

ChildProcess::~ChildProcess() = default;

std::unique_ptr<ChildProcess> ChildProcess::start(const std::string& commandLine, ErrorCode& error) {
  std::vector<std::string> words = splitWords(commandLine);
  if (words.empty() || words.front().empty()) {
    error = fail(kInvalidParameter);
    return nullptr;
  }
  words.front() = programFile(words.front());
  auto state = std::make_shared<ChildState>();
  try {
    const AllSignalsBlocked blocked;
    std::thread(runChild, state, std::move(words)).detach();
  } catch (const std::system_error& failure) {
    error = fail(errorFromErrno(failure.code().value()));
    return nullptr;
  }
  std::unique_lock lock(state->mutex);
  state->changed.wait(lock, [&] { return state->spawnResult.has_value(); });
  lock.unlock();
  error = fail(errorFromErrno(*state->spawnResult));
  if (error != kSuccess) return nullptr;
  return std::make_unique<NativeChildProcess>(std::move(state));
}

}  // namespace qvn::platform
