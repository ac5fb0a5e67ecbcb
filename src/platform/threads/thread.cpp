#include "platform/threads/thread.h"

#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <utility>

#include "platform/base/failure.h"
#include "platform/base/forks.h"
#include "platform/threads/all_signals_blocked.h"

namespace qvn::platform {
namespace {

// The calling thread's id once it was asked for, and when: a child made by fork runs on a thread with another
// one.
thread_local std::uint32_t knownThreadId = 0;
thread_local std::uint32_t knownAtForks = 0;

constexpr std::int32_t kLowestNice = -20;
constexpr std::int32_t kHighestNice = 19;

// What the thread and its handle share; freed by whoever ends last.
struct ThreadState {
  std::function<std::uint32_t()> body;
  std::mutex mutex;
  std::condition_variable changed;
  std::uint32_t id = 0;  // 0 until the thread runs
  bool ended = false;
  std::uint32_t exitCode = kStillActive;
};

void* runThread(void* argument) {
  const std::unique_ptr<std::shared_ptr<ThreadState>> owner(
      static_cast<std::shared_ptr<ThreadState>*>(argument));
  ThreadState& state = **owner;
  // Whoever is woken must not have to wait for the lock at once, so it is given up before.
  {
    const std::lock_guard guard(state.mutex);
    state.id = currentThreadId();
  }
  state.changed.notify_all();
  const std::uint32_t code = state.body();
  {
    const std::lock_guard guard(state.mutex);
    state.ended = true;
    state.exitCode = code;
  }
  state.changed.notify_all();
  return nullptr;
}

class NativeThread final : public ThreadHandle {
 public:
  NativeThread(pthread_t thread, std::shared_ptr<ThreadState> state)
      : thread_(thread), state_(std::move(state)) {}

  ~NativeThread() override {
    if (pthread_equal(thread_, pthread_self()) != 0) {
      pthread_detach(thread_);
    } else {
      join();
    }
  }

  std::uint32_t id() const override {
    std::unique_lock lock(state_->mutex);
    return idWhenRunning(lock);
  }

  std::uint32_t exitCode() const override {
    const std::lock_guard guard(state_->mutex);
    return state_->exitCode;
  }

  WaitResult wait(Milliseconds timeout) override {
    // Waiting for the thread itself wakes the caller once, waiting for its word and then for itself twice.
    if (timeout == kInfinite) {
      join();
      return WaitResult::Signalled;
    }
    std::unique_lock lock(state_->mutex);
    const bool ended = clock().wait(lock, state_->changed, timeout, [&] { return state_->ended; });
    return ended ? WaitResult::Signalled : WaitResult::TimedOut;
  }

  bool setPriority(std::int32_t priority) override {
    // Under the lock the thread cannot end, so its id names no other.
    std::unique_lock lock(state_->mutex);
    const std::uint32_t id = idWhenRunning(lock);
    if (state_->ended) {
      setLastError(kInvalidHandle);
      return false;
    }
    const std::int32_t normal = getpriority(PRIO_PROCESS, static_cast<id_t>(getpid()));
    const std::int64_t nice =
        std::clamp<std::int64_t>(std::int64_t{normal} - priority, kLowestNice, kHighestNice);
    if (setpriority(PRIO_PROCESS, id, static_cast<int>(nice)) == 0) return true;
    failWithErrno();
    return false;
  }

 private:
  // Any number of threads may wait for the end.
  void join() {
    std::call_once(joined_, [this] { pthread_join(thread_, nullptr); });
  }

  // The thread itself finds out its id.
  std::uint32_t idWhenRunning(std::unique_lock<std::mutex>& lock) const {
    state_->changed.wait(lock, [&] { return state_->id != 0; });
    return state_->id;
  }

  const pthread_t thread_;
  const std::shared_ptr<ThreadState> state_;
  std::once_flag joined_;
};

// The system's own stack size, or the hint where that is more.
int setStackSize(pthread_attr_t& attributes, std::size_t hint) {
  std::size_t usual = 0;
  pthread_attr_getstacksize(&attributes, &usual);
  if (hint <= usual) return 0;
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  return pthread_attr_setstacksize(&attributes, (hint + page - 1) / page * page);
}

}  // namespace

ThreadHandle::~ThreadHandle() = default;

std::unique_ptr<ThreadHandle> ThreadHandle::start(std::function<std::uint32_t()> body,
                                                  std::uint32_t initialStackSize, ErrorCode& error) {
  if (!body) {
    error = fail(kInvalidParameter);
    return nullptr;
  }
  auto state = std::make_shared<ThreadState>();
  state->body = std::move(body);
  auto argument = std::make_unique<std::shared_ptr<ThreadState>>(state);

  pthread_attr_t attributes;
  pthread_t thread{};
  int result = pthread_attr_init(&attributes);
  if (result == 0) {
    result = setStackSize(attributes, initialStackSize);
    const AllSignalsBlocked blocked;
    if (result == 0) result = pthread_create(&thread, &attributes, runThread, argument.get());
    pthread_attr_destroy(&attributes);
  }
  if (result != 0) {
    error = fail(errorFromErrno(result));
    return nullptr;
  }
  static_cast<void>(argument.release());  // The thread owns it now.
  error = kSuccess;
  return std::make_unique<NativeThread>(thread, std::move(state));
}

std::uint32_t currentThreadId() {
  // A mutex asks for it several times, and each time would be a system call.
  if (const std::uint32_t now = forks(); knownThreadId == 0 || knownAtForks != now) {
    knownThreadId = static_cast<std::uint32_t>(gettid());
    knownAtForks = now;
  }
  return knownThreadId;
}

std::uint32_t currentProcessId() { return static_cast<std::uint32_t>(getpid()); }

}  // namespace qvn::platform
