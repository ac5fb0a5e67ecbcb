// Threads: exit codes, waits, identity, priority, last error.
#include "platform/threads/thread.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <future>
#include <set>
#include <vector>

#include "platform/process/module.h"
#include "support/manual_clock.h"
#include "support/other_threads.h"

namespace qvn::platform {
namespace {

std::unique_ptr<ThreadHandle> start(std::function<std::uint32_t()> body, std::uint32_t stack = 4096) {
  ErrorCode error = kInvalidHandle;
  auto thread = ThreadHandle::start(std::move(body), stack, error);
  EXPECT_EQ(error, kSuccess);
  return thread;
}

TEST(Thread, EndsWithTheValueOfItsBody) {
  std::uint32_t inside = 0;
  const auto thread = start([&] {
    inside = currentThreadId();
    return 7U;
  });
  EXPECT_EQ(thread->wait(kInfinite), WaitResult::Signalled);
  EXPECT_EQ(thread->exitCode(), 7U);
  EXPECT_EQ(thread->id(), inside);
  EXPECT_NE(inside, currentThreadId());
}

// A thread that runs until it is let go.
class Waiting {
 public:
  ThreadHandle& thread() { return *thread_; }
  void letGo() { release_->set(); }

 private:
  ErrorCode error_ = kSuccess;
  const std::unique_ptr<NamedEvent> release_ = NamedEvent::create("", true, false, {}, error_);
  const std::unique_ptr<ThreadHandle> thread_ = start([this] {
    release_->wait(kInfinite);
    return 0U;
  });
};

TEST(Thread, AWaitForARunningOneEndsByTheClock) {
  test::ManualClock manual(test::ManualClock::Mode::AutoAdvance);
  Waiting waiting;
  EXPECT_EQ(waiting.thread().wait(15'000), WaitResult::TimedOut);
  EXPECT_EQ(waiting.thread().exitCode(), kStillActive);
  EXPECT_EQ(manual.monotonicMilliseconds(), 15'000U);
  waiting.letGo();
  EXPECT_EQ(waiting.thread().wait(kInfinite), WaitResult::Signalled);
}

TEST(Thread, TheStackHintIsNoLimit) {
  for (const std::uint32_t hint : {0U, 4096U, 64U << 20}) {
    const auto thread = start(
        [] {
          volatile char block[200'000] = {};
          return static_cast<std::uint32_t>(block[100]);
        },
        hint);
    EXPECT_EQ(thread->wait(kInfinite), WaitResult::Signalled);
  }
}

TEST(Thread, PriorityIsRelativeToTheProcess) {
  Waiting waiting;
  ThreadHandle& thread = waiting.thread();
  EXPECT_TRUE(thread.setPriority(0));
  EXPECT_TRUE(thread.setPriority(-5));
  EXPECT_EQ(getpriority(PRIO_PROCESS, thread.id()), getpriority(PRIO_PROCESS, 0) + 5);
  waiting.letGo();
  EXPECT_EQ(thread.wait(kInfinite), WaitResult::Signalled);
  EXPECT_FALSE(thread.setPriority(0));
  EXPECT_EQ(lastError(), kInvalidHandle);
}

TEST(Thread, HasALastErrorOfItsOwnAndLeavesAClientsSignalsToTheClientsThreads) {
  const auto blocksSignals = [] {
    sigset_t mask;
    return pthread_sigmask(SIG_SETMASK, nullptr, &mask) == 0 && sigismember(&mask, SIGUSR1) == 1;
  };
  setLastError(5);
  start([&] {
    EXPECT_EQ(lastError(), kSuccess);
    EXPECT_TRUE(blocksSignals());
    setLastError(6);
    return 0U;
  }).reset();  // waits for its end
  EXPECT_EQ(lastError(), 5U);
  EXPECT_FALSE(blocksSignals());
}

// While threads are kept for the next start.
class KeptThread : public testing::Test {
 protected:
  KeptThread() { keepThreads(true); }
  ~KeptThread() override { keepThreads(false); }
};

TEST_F(KeptThread, IsAsGoodAsNew) {
  struct Ended {
    ~Ended() { ++count; }
    std::atomic<int>& count;
  };
  static std::atomic<int> ends;
  ends = 0;
  std::set<std::uint32_t> ids;
  for (int i = 0; i < 5; ++i) {
    start([&] {
      static thread_local const Ended ended{ends};
      EXPECT_EQ(lastError(), kSuccess);
      setLastError(6);
      ids.insert(currentThreadId());
      return 0U;
    }).reset();
  }
  EXPECT_EQ(ids.size(), 1U) << "one after the other";
  EXPECT_EQ(ends, 0);
  ErrorCode error = kSuccess;
  Module::load("libm.so.6", error, nullptr).reset();
  EXPECT_EQ(ends, 1) << "what it had of its own could have been the module's";
}

TEST_F(KeptThread, IsOneOfFewAndHasItsUsualPriority) {
  const auto idsOf = [](bool alters) {
    std::array<Waiting, 7> many;
    EXPECT_TRUE(!alters || many[0].thread().setPriority(-5));
    std::vector<std::uint32_t> ids;
    for (Waiting& one : many) ids.push_back(one.thread().id());
    for (Waiting& one : many) {
      one.letGo();
      EXPECT_EQ(one.thread().wait(kInfinite), WaitResult::Signalled);
    }
    return ids;
  };
  const std::vector<std::uint32_t> before = idsOf(true);
  const std::vector<std::uint32_t> after = idsOf(false);
  const auto isKept = [&](std::uint32_t id) {
    return std::find(after.begin(), after.end(), id) != after.end();
  };
  EXPECT_FALSE(isKept(before[0]));
  EXPECT_EQ(std::count_if(before.begin(), before.end(), isKept), 4);
}

TEST_F(KeptThread, MayEndItsOwnHandle) {
  auto handle = std::make_shared<std::unique_ptr<ThreadHandle>>();
  std::promise<void> given;
  std::promise<void> done;
  *handle = start([&] {
    given.get_future().wait();
    EXPECT_EQ((*handle)->wait(kInfinite), WaitResult::TimedOut);
    handle->reset();
    done.set_value();
    return 0U;
  });
  given.set_value();
  done.get_future().wait();
  test::waitForOthersToRest();  // nobody can wait for its end
}

TEST(Thread, ABodyIsRequired) {
  ErrorCode error = kSuccess;
  EXPECT_EQ(ThreadHandle::start(nullptr, 0, error), nullptr);
  EXPECT_EQ(error, kInvalidParameter);
}

}  // namespace
}  // namespace qvn::platform
