#include "platform/threads/system_threads.h"

#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <utility>
#include <vector>

#include "platform/base/forks.h"
#include "platform/threads/all_signals_blocked.h"
#include "platform/threads/brief_wait.h"

namespace qvn::platform {
namespace {

// As many as exchanges take place at the same time in most clients.
constexpr std::size_t kMostWaiting = 4;

struct SystemThread {
  pthread_t thread{};
  std::mutex mutex;  // guards what follows
  std::condition_variable called;
  std::shared_ptr<ThreadRun> next;     // null once it is called: it is to end
  std::atomic<bool> isCalled = false;  // may be looked at without the lock
};

struct Waiting {
  std::mutex mutex;  // guards what follows
  bool isOn = false;
  std::uint32_t atForks = 0;  // in a child the threads are not there
  std::vector<std::shared_ptr<SystemThread>> threads;
  BriefWait gap;  // between two runs
};

// Never destroyed: threads may use it while the process ends.
Waiting& waiting() {
  static auto& all = *new Waiting;
  return all;
}

// Whether the thread waits for another run.
bool wait(const std::shared_ptr<SystemThread>& self) {
  Waiting& all = waiting();
  const std::lock_guard lock(all.mutex);
  if (!all.isOn || all.atForks != forks() || all.threads.size() == kMostWaiting) return false;
  all.threads.push_back(self);
  return true;
}

void call(SystemThread& thread, std::shared_ptr<ThreadRun> next) {
  {
    const std::lock_guard lock(thread.mutex);
    thread.next = std::move(next);
    thread.isCalled = true;
  }
  thread.called.notify_one();
}

// Null when the thread is to end.
std::shared_ptr<ThreadRun> nextRun(SystemThread& self) {
  const auto isCalled = [&] { return self.isCalled.load(); };
  waiting().gap.wait(isCalled, [&] {
    std::unique_lock lock(self.mutex);
    self.called.wait(lock, isCalled);
  });
  const std::lock_guard lock(self.mutex);
  self.isCalled = false;
  return std::exchange(self.next, nullptr);
}

// Whether the thread waits for another run then.
bool perform(ThreadRun& run, const std::shared_ptr<SystemThread>& self) {
  // Whoever is woken must not have to wait for the lock at once, so it is given up before.
  {
    const std::lock_guard lock(run.mutex);
    run.id = currentThreadId();
  }
  run.changed.notify_all();
  const std::uint32_t code = run.body();
  run.body = nullptr;
  setLastError(kSuccess);
  bool waits = false;
  {
    const std::lock_guard lock(run.mutex);
    waits = !run.isAltered && wait(self);
    if (!waits && run.isAbandoned) pthread_detach(self->thread);
    if (!waits) run.endsToo = self->thread;
    run.exitCode = code;
    run.ended = true;
  }
  run.changed.notify_all();
  return waits;
}

void* performAll(void* argument) {
  const std::unique_ptr<std::shared_ptr<SystemThread>> owner(
      static_cast<std::shared_ptr<SystemThread>*>(argument));
  const std::shared_ptr<SystemThread> self = *owner;
  self->thread = pthread_self();
  bool goesOn = true;
  while (goesOn) {
    const std::shared_ptr<ThreadRun> run = nextRun(*self);
    goesOn = run != nullptr && perform(*run, self);
  }
  return nullptr;
}

// The system's own stack size, or the hint where that is more.
int setStackSize(pthread_attr_t& attributes, std::size_t hint) {
  std::size_t usual = 0;
  pthread_attr_getstacksize(&attributes, &usual);
  if (hint <= usual) return 0;
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  return pthread_attr_setstacksize(&attributes, (hint + page - 1) / page * page);
}

// A new thread that runs it. 0 or the error number.
int makeThread(std::shared_ptr<SystemThread> made, std::size_t stackSize) {
  auto argument = std::make_unique<std::shared_ptr<SystemThread>>(std::move(made));
  pthread_attr_t attributes;
  int error = pthread_attr_init(&attributes);
  if (error != 0) return error;
  error = setStackSize(attributes, stackSize);
  pthread_t thread{};
  const AllSignalsBlocked blocked;
  if (error == 0) error = pthread_create(&thread, &attributes, performAll, argument.get());
  if (error == 0) static_cast<void>(argument.release());  // The thread owns it now.
  pthread_attr_destroy(&attributes);
  return error;
}

// The one that has waited for the shortest time, whose memory is most likely still in the caches; or null.
std::shared_ptr<SystemThread> takeWaiting() {
  Waiting& all = waiting();
  const std::lock_guard lock(all.mutex);
  if (all.threads.empty() || all.atForks != forks()) return nullptr;
  std::shared_ptr<SystemThread> taken = std::move(all.threads.back());
  all.threads.pop_back();
  return taken;
}

}  // namespace

ErrorCode begin(const std::shared_ptr<ThreadRun>& run, std::size_t stackSize) {
  if (const std::shared_ptr<SystemThread> thread = takeWaiting()) {
    call(*thread, run);
    return kSuccess;
  }
  auto made = std::make_shared<SystemThread>();
  call(*made, run);
  const int error = makeThread(std::move(made), stackSize);
  return error == 0 ? kSuccess : errorFromErrno(error);
}

void keepThreads(bool keep) {
  {
    Waiting& all = waiting();
    const std::lock_guard lock(all.mutex);
    if (all.atForks != forks()) all.threads.clear();
    all.atForks = forks();
    all.isOn = keep;
  }
  if (!keep) endWaitingThreads();
}

void endWaitingThreads() {
  while (const std::shared_ptr<SystemThread> thread = takeWaiting()) {
    call(*thread, nullptr);
    pthread_join(thread->thread, nullptr);
  }
}

}  // namespace qvn::platform
