#include "platform/threads/thread.h"

#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <mutex>
#include <optional>
#include <utility>

#include "platform/base/failure.h"
#include "platform/base/forks.h"
#include "platform/threads/brief_wait.h"
#include "platform/threads/system_threads.h"
#include "platform/threads/thread_run.h"

namespace qvn::platform {
namespace {

// The calling thread's id once it was asked for, and when: a child made by fork runs on a thread with another
// one.
thread_local std::uint32_t knownThreadId = 0;
thread_local std::uint32_t knownAtForks = 0;

constexpr std::int32_t kLowestNice = -20;
constexpr std::int32_t kHighestNice = 19;

class NativeThread final : public ThreadHandle {
 public:
  explicit NativeThread(std::shared_ptr<ThreadRun> run) : run_(std::move(run)) {}

  ~NativeThread() override {
    {
      const std::lock_guard guard(run_->mutex);
      run_->isAbandoned = isOwnThread();
      if (run_->isAbandoned) return;
    }
    NativeThread::wait(kInfinite);
  }

  std::uint32_t id() const override {
    std::unique_lock lock(run_->mutex);
    return idWhenRunning(lock);
  }

  std::uint32_t exitCode() const override {
    const std::lock_guard guard(run_->mutex);
    return run_->exitCode;
  }

  WaitResult wait(Milliseconds timeout) override {
    const auto hasEnded = [this] { return run_->ended.load(); };
    {
      std::unique_lock lock(run_->mutex);
      if (timeout != kInfinite) {
        const bool ended = clock().wait(lock, run_->changed, timeout, hasEnded);
        return ended ? WaitResult::Signalled : WaitResult::TimedOut;
      }
      if (isOwnThread()) return WaitResult::TimedOut;  // it would never return
    }
    static BriefWait lastRuns;
    lastRuns.wait(hasEnded, [&] {
      std::unique_lock lock(run_->mutex);
      run_->changed.wait(lock, hasEnded);
    });
    // Any number of threads may wait for the end.
    const std::lock_guard guard(run_->mutex);
    if (const auto thread = std::exchange(run_->endsToo, std::nullopt)) pthread_join(*thread, nullptr);
    return WaitResult::Signalled;
  }

  bool setPriority(std::int32_t priority) override {
    // Under the lock the run cannot end, so its thread is no other's.
    std::unique_lock lock(run_->mutex);
    const std::uint32_t id = idWhenRunning(lock);
    if (run_->ended) {
      setLastError(kInvalidHandle);
      return false;
    }
    run_->isAltered = run_->isAltered || priority != 0;
    const std::int32_t normal = getpriority(PRIO_PROCESS, static_cast<id_t>(getpid()));
    const std::int64_t nice =
        std::clamp<std::int64_t>(std::int64_t{normal} - priority, kLowestNice, kHighestNice);
    if (setpriority(PRIO_PROCESS, id, static_cast<int>(nice)) == 0) return true;
    failWithErrno();
    return false;
  }

 private:
  // With the lock.
  bool isOwnThread() const { return run_->id == currentThreadId() && !run_->ended; }

  // The thread itself finds out its id.
  std::uint32_t idWhenRunning(std::unique_lock<std::mutex>& lock) const {
    run_->changed.wait(lock, [&] { return run_->id != 0; });
    return run_->id;
  }

  const std::shared_ptr<ThreadRun> run_;
};

}  // namespace

ThreadHandle::~ThreadHandle() = default;

std::unique_ptr<ThreadHandle> ThreadHandle::start(std::function<std::uint32_t()> body,
                                                  std::uint32_t initialStackSize, ErrorCode& error) {
  if (!body) {
    error = fail(kInvalidParameter);
    return nullptr;
  }
  auto run = std::make_shared<ThreadRun>();
  run->body = std::move(body);
  error = begin(run, initialStackSize);
  if (error != kSuccess) {
    fail(error);
    return nullptr;
  }
  return std::make_unique<NativeThread>(std::move(run));
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
