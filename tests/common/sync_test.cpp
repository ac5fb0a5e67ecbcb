// Events, mutexes, threads and child processes as the library wraps them.
#include <gtest/gtest.h>

#include <thread>

#include "common/exception.h"
#include "common/process/application.h"
#include "common/threads/event.h"
#include "common/threads/inter_process_lock.h"
#include "common/threads/mutex.h"
#include "common/threads/security.h"
#include "common/threads/thread.h"
#include "support/manual_clock.h"
#include "support/process/forked.h"
#include "support/throws.h"

namespace qvn {
namespace {

// Runs the check on a thread of its own: another owner.
template <typename Check>
void onOtherThread(Check&& check) {
  std::thread(check).join();
}

TEST(Mutex, TimeZeroNeverTriesButAMutexLockOfZeroDoes) {
  Mutex mutex(false, "", false);
  EXPECT_FALSE(mutex.acquire(0));
  const MutexLock lock(mutex, 0);
  EXPECT_TRUE(lock.acquired());
}

TEST(Mutex, OneReleaseUndoesEveryHold) {
  Mutex mutex(true, "", false);
  EXPECT_TRUE(mutex.acquire(1));
  EXPECT_TRUE(mutex.acquire(1));
  onOtherThread([&] {
    mutex.release();  // not its owner: nothing happens
    EXPECT_FALSE(MutexLock(mutex, 0).acquired());
  });
  mutex.release();
  onOtherThread([&] { EXPECT_TRUE(MutexLock(mutex, 0).acquired()); });
  EXPECT_NO_THROW(mutex.release());
}

TEST(Mutex, WhatAThreadHeldThatEndedIsVoid) {
  for (const char* const name : {"", "endedHolder"}) {
    Mutex mutex(false, name, false);
    onOtherThread([&] {
      EXPECT_TRUE(mutex.acquire(1));
      EXPECT_TRUE(mutex.acquire(1));
    });
    EXPECT_TRUE(MutexLock(mutex, 0).acquired()) << name;
    onOtherThread([&] { EXPECT_TRUE(MutexLock(mutex, 0).acquired()) << name; });
  }
}

TEST(Mutex, AForkedChildHoldsNothingOfItsParents) {
  Mutex mutex(true, "forkedHolder", false);
  test::Pipe tried;
  test::Pipe released;
  test::Forked child([&] {
    mutex.release();
    tried.tell(MutexLock(mutex, 0).acquired() ? 1 : 0);
    released.hear();
    for (int i = 0; i < 2; ++i) const InterProcessLock lock(mutex);
    mutex.release();
    return MutexLock(mutex, 0).acquired() ? 0 : 1;
  });
  EXPECT_EQ(tried.hear(), 0);
  mutex.release();
  released.tell(1);
  EXPECT_EQ(child.wait(), 0);
}

TEST(InterProcessLock, NeedsAName) {
  Mutex unnamed(false, "", true);
  EXPECT_THAT([&] { const InterProcessLock lock(unnamed); },
              test::throwsWin32("InterProcessLock has no name", 0));
  Mutex named(false, "syncTest", true);
  {
    const InterProcessLock lock(named);
    Mutex sameName(false, "syncTest", true);
    onOtherThread([&] { EXPECT_FALSE(MutexLock(sameName, 0).acquired()); });
  }
  onOtherThread([&] { EXPECT_TRUE(MutexLock(named, 0).acquired()); });
}

TEST(Event, AnswersWhetherItWasSignalled) {
  test::ManualClock clock(test::ManualClock::Mode::AutoAdvance);
  Event event(false, true, "", false);
  EXPECT_TRUE(event.wait(0xFFFFFFFF));
  EXPECT_FALSE(event.wait(60000));
  event.set();
  event.reset();
  EXPECT_FALSE(event.wait(0));
}

TEST(Thread, ThatWasNotStartedHasNeitherHandleNorExitCode) {
  FunctionRunnable nothing(nullptr, [](void*) { return 0u; });
  const Thread thread(nothing);
  std::uint32_t code = 1;
  platform::ThreadHandle* handle = nullptr;
  EXPECT_FALSE(thread.getExitCode(code));
  EXPECT_FALSE(thread.getHandle(handle));
  EXPECT_EQ(code, 1u);
}

TEST(Thread, RunsWhileItsStarterGoesOn) {
  struct Waits : Runnable {
    std::uint32_t run() override { return event.wait(platform::kInfinite) ? 3 : 4; }
    Event event{true, false, "", false};
  };
  for (const auto startIt : {&Thread::launch, &Thread::start}) {
    Waits waits;
    Thread thread(waits);
    (thread.*startIt)();
    std::uint32_t code = 0;
    EXPECT_FALSE(thread.getExitCode(code));
    EXPECT_EQ(code, 259u);
    waits.event.set();
    EXPECT_TRUE(thread.waitFor(platform::kInfinite));
    EXPECT_TRUE(thread.getExitCode(code));
    EXPECT_EQ(code, 3u);
  }
}

TEST(Thread, WhatItsRunnableAnswersOrThrowsIsTheExitCode) {
  const std::pair<std::uint32_t (*)(void*), std::uint32_t> cases[] = {
      {[](void*) -> std::uint32_t { return 7; }, 7},
      {[](void*) -> std::uint32_t { throw Win32Exception("x", 31, "", 0); }, 31},
      {[](void*) -> std::uint32_t { throw 5; }, 1359},
  };
  for (const auto& [function, expected] : cases) {
    FunctionRunnable runnable(nullptr, function);
    Thread thread(runnable);
    thread.startAndWait();
    std::uint32_t code = 0;
    platform::ThreadHandle* handle = nullptr;
    EXPECT_TRUE(thread.getExitCode(code));
    EXPECT_EQ(code, expected);
    EXPECT_TRUE(thread.getHandle(handle));
    EXPECT_TRUE(thread.waitFor(0));
  }
}

TEST(Application, LaunchesAProcessWaitsForItAndSaysWhenItCannot) {
  test::ManualClock clock(test::ManualClock::Mode::AutoAdvance, std::chrono::milliseconds(1000));
  Application ends("true");
  ends.launch();
  ASSERT_TRUE(ends.waitFor(15000));
  EXPECT_FALSE(ends.isRunning());
  Application missing("qvn-no-such-program /s /i x");
  Application idle("true");
  EXPECT_TRUE(idle.setPriorityClass(64)) << "it does not run yet";
  EXPECT_THAT([&] { missing.start(); }, test::throwsWin32("Application::launch()", 2));
  EXPECT_THAT([&] { idle.start(); }, test::throwsWin32("Application::launch()", 87));
}

TEST(SecurityEveryone, LetsOtherAccountsIn) {
  for (const bool inheritable : {false, true}) {
    const SecurityEveryone security(inheritable);
    EXPECT_TRUE(security.getSecurityAttributes().everyone);
    EXPECT_EQ(security.getSecurityAttributes().inheritable, inheritable);
  }
}

}  // namespace
}  // namespace qvn
