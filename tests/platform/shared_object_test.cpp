// Events and mutexes, within one process and between several.
#include <gmock/gmock.h>
#include <sys/mman.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <random>
#include <thread>

#include "platform/files/paths.h"
#include "platform/threads/event.h"
#include "platform/threads/mutex.h"
#include "support/manual_clock.h"
#include "support/other_threads.h"
#include "support/process/forked.h"

namespace qvn::platform {
namespace {

namespace fs = std::filesystem;
using test::Forked;
using test::Pipe;

constexpr Access kEveryone{.everyone = true};
constexpr const char* kNames[] = {"", "test-object"};

std::unique_ptr<NamedEvent> makeEvent(const std::string& name, bool manualReset, bool set = false) {
  ErrorCode error = kInvalidHandle;
  auto event = NamedEvent::create(name, manualReset, set, kEveryone, error);
  EXPECT_EQ(error, kSuccess) << name;
  return event;
}

std::unique_ptr<NamedMutex> makeMutex(const std::string& name, bool owned = false) {
  ErrorCode error = kInvalidHandle;
  auto mutex = NamedMutex::create(name, owned, kEveryone, error);
  EXPECT_EQ(error, kSuccess) << name;
  return mutex;
}

// A number that processes share.
class SharedNumber {
 public:
  SharedNumber()
      : number_(static_cast<std::atomic<int>*>(mmap(nullptr, sizeof(std::atomic<int>), PROT_READ | PROT_WRITE,
                                                    MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {}
  ~SharedNumber() { munmap(number_, sizeof(std::atomic<int>)); }
  std::atomic<int>* operator->() { return number_; }

 private:
  std::atomic<int>* number_;
};

WaitResult acquireOnAnotherThread(NamedMutex& mutex, Milliseconds timeout) {
  WaitResult result = WaitResult::Failed;
  std::thread([&] {
    result = mutex.acquire(timeout);
    if (result == WaitResult::Signalled || result == WaitResult::Abandoned) mutex.release();
  }).join();
  return result;
}

// A wait that the clock ends, then one that `release` ends.
template <typename Wait, typename Release>
void expectTimedWaits(const Wait& wait, const Release& release) {
  test::ManualClock manual;
  WaitResult first = WaitResult::Failed;
  WaitResult second = WaitResult::Failed;
  std::thread waiter([&] {
    first = wait(60'000);
    second = wait(60'000);
  });
  EXPECT_TRUE(manual.waitForWaiters(1));
  manual.advance(60'000);
  EXPECT_TRUE(manual.waitForWaiters(1));
  release();
  waiter.join();
  EXPECT_EQ(first, WaitResult::TimedOut);
  EXPECT_EQ(second, WaitResult::Signalled);
}

TEST(Event, AutoResetReleasesOneWaitPerSetAndManualResetEveryOneUntilReset) {
  for (const char* const name : kNames) {
    for (const bool manual : {false, true}) {
      SCOPED_TRACE(std::string(name) + (manual ? " manual" : " auto"));
      const auto event = makeEvent(name, manual, true);
      const WaitResult again = manual ? WaitResult::Signalled : WaitResult::TimedOut;
      EXPECT_EQ(event->wait(0), WaitResult::Signalled);
      EXPECT_EQ(event->wait(1), again);
      event->set();
      event->set();
      EXPECT_EQ(event->wait(kInfinite), WaitResult::Signalled);
      EXPECT_EQ(event->wait(0), again);
      event->reset();
      EXPECT_EQ(event->wait(0), WaitResult::TimedOut);
    }
  }
}

TEST(Event, TimedWaitsGoByTheClock) {
  for (const char* const name : kNames) {
    SCOPED_TRACE(name);
    const auto event = makeEvent(name, false);
    expectTimedWaits([&](Milliseconds timeout) { return event->wait(timeout); }, [&] { event->set(); });
  }
}

TEST(Event, OneNameIsOneEventForAllProcesses) {
  Pipe ready;
  const auto toChild = makeEvent("to-child", false);
  const auto toParent = makeEvent("to-parent", true);
  Forked child([&] {
    ready.tell(1);
    const auto there = makeEvent("to-child", true);  // its first maker made it auto-reset
    if (there->wait(kInfinite) != WaitResult::Signalled || there->wait(0) != WaitResult::TimedOut) return 1;
    return makeEvent("to-parent", false)->set() == kSuccess ? 0 : 2;
  });
  ASSERT_EQ(ready.hear(), 1);
  toChild->set();
  EXPECT_EQ(toParent->wait(kInfinite), WaitResult::Signalled);
  EXPECT_EQ(toParent->wait(0), WaitResult::Signalled) << "manual reset";
  EXPECT_EQ(child.wait(), 0);
}

TEST(Event, AWaiterThatIsKilledTakesNothingAlong) {
  constexpr int kWaiters = 3;
  const auto event = makeEvent("killed-waiters", false);
  Pipe waiting;
  std::vector<std::unique_ptr<Forked>> waiters;
  for (int i = 0; i < kWaiters; ++i) {
    waiters.push_back(std::make_unique<Forked>([&] {
      waiting.tell(1);
      return event->wait(kInfinite) == WaitResult::Signalled ? 0 : 1;
    }));
  }
  for (int i = 0; i < kWaiters; ++i) ASSERT_EQ(waiting.hear(), 1);
  waiters[0]->kill();
  waiters[1]->kill();
  event->set();
  EXPECT_EQ(waiters[2]->wait(), 0);
}

TEST(Event, ItsStateEndsWithTheLastProcessThatHasItOpen) {
  Forked setter([] { return makeEvent("left-set", true)->set() == kSuccess ? 0 : 1; });
  ASSERT_EQ(setter.wait(), 0);
  EXPECT_EQ(makeEvent("left-set", true)->wait(0), WaitResult::TimedOut);
  {
    const auto first = makeEvent("left-set", true);
    first->set();
    EXPECT_EQ(makeEvent("left-set", true)->wait(0), WaitResult::Signalled);
  }
  EXPECT_EQ(makeEvent("left-set", true)->wait(0), WaitResult::TimedOut);
}

TEST(Mutex, ItsHolderMayTakeItAgain) {
  for (const char* const name : kNames) {
    const auto mutex = makeMutex(name);
    for (int i = 0; i < 3; ++i)
      ASSERT_EQ(mutex->acquire(i == 0 ? kInfinite : 1000), WaitResult::Signalled) << name;
    EXPECT_EQ(acquireOnAnotherThread(*mutex, 1), WaitResult::TimedOut) << name;
    for (int i = 0; i < 2; ++i) EXPECT_EQ(mutex->release(), kSuccess) << name;
    EXPECT_EQ(acquireOnAnotherThread(*mutex, 0), WaitResult::TimedOut) << name;
    EXPECT_EQ(mutex->release(), kSuccess) << name;
    EXPECT_EQ(acquireOnAnotherThread(*mutex, 0), WaitResult::Signalled) << name;
  }
}

TEST(Mutex, OnlyItsHolderReleasesItWhichIsItsMakerAtFirst) {
  for (const char* const name : kNames) {
    SCOPED_TRACE(name);
    const auto made = makeMutex(name, true);
    std::thread([&] { EXPECT_EQ(made->release(), kNotOwner); }).join();
    EXPECT_EQ(made->release(), kSuccess);
    EXPECT_EQ(makeMutex(name)->release(), kNotOwner);
    EXPECT_EQ(made->release(), kNotOwner);
    EXPECT_EQ(lastError(), kNotOwner);
  }
  const auto made = makeMutex("opened");
  EXPECT_EQ(makeMutex("opened", true)->release(), kNotOwner) << "who opens it does not own it";
}

TEST(Mutex, TimedWaitsGoByTheClock) {
  for (const char* const name : kNames) {
    SCOPED_TRACE(name);
    const auto mutex = makeMutex(name, true);
    const auto acquire = [&](Milliseconds timeout) {
      const WaitResult result = mutex->acquire(timeout);
      if (result == WaitResult::Signalled) mutex->release();
      return result;
    };
    expectTimedWaits(acquire, [&] { mutex->release(); });
  }
}

// A process that holds the mutex until it is killed.
class Holder {
 public:
  explicit Holder(NamedMutex& mutex)
      : process_([&] {
          if (mutex.acquire(kInfinite) == WaitResult::Signalled) holding_.tell(1);
          return pause();
        }) {
    EXPECT_EQ(holding_.hear(), 1);
  }
  void kill() { process_.kill(); }

 private:
  Pipe holding_;
  Forked process_;
};

TEST(Mutex, AHolderThatWasKilledLeavesItAbandoned) {
  for (const Milliseconds timeout : {kInfinite, Milliseconds{5000}, Milliseconds{0}}) {
    const auto mutex = makeMutex("abandoned");
    Holder holder(*mutex);
    EXPECT_EQ(mutex->acquire(0), WaitResult::TimedOut);
    holder.kill();
    EXPECT_EQ(mutex->acquire(timeout), WaitResult::Abandoned) << timeout;
    EXPECT_EQ(mutex->release(), kSuccess);
    EXPECT_EQ(mutex->acquire(timeout), WaitResult::Signalled) << timeout;
    EXPECT_EQ(mutex->release(), kSuccess);
  }
}

TEST(Mutex, AForkedChildCountsItsOwnHolds) {
  const auto mutex = makeMutex("forked", true);
  Pipe released;
  Forked child([&] {
    released.hear();
    for (int i = 0; i < 2; ++i) {
      if (mutex->acquire(kInfinite) != WaitResult::Signalled || mutex->release() != kSuccess) return 1;
    }
    return mutex->release() == kNotOwner ? 0 : 2;
  });
  EXPECT_EQ(mutex->release(), kSuccess);
  released.tell(1);
  EXPECT_EQ(child.wait(), 0);
}

TEST(Mutex, ATimedWaiterNoticesThatTheHolderDies) {
  const auto mutex = makeMutex("dying");
  Holder holder(*mutex);
  std::thread waiter([&] {
    EXPECT_EQ(mutex->acquire(60'000), WaitResult::Abandoned);
    mutex->release();
  });
  test::waitForOthersToRest();
  holder.kill();
  waiter.join();
}

TEST(Mutex, AThreadThatEndsLeavesItAbandoned) {
  for (const char* const name : kNames) {
    const auto mutex = makeMutex(name);
    std::thread([&] { mutex->acquire(kInfinite); }).join();
    EXPECT_EQ(mutex->acquire(kInfinite), WaitResult::Abandoned) << name;
    EXPECT_EQ(mutex->release(), kSuccess) << name;
  }
}

TEST(Mutex, AHandleDroppedWhileHeldHarmsNobody) {
  // The object that a thread held stays open in its process.
  test::inOwnProcess([] {
    for (const char* const name : kNames) {
      std::thread([&] {
        auto mutex = makeMutex(name, true);
        mutex.reset();
        const auto other = makeMutex(name[0] == '\0' ? "" : "another", true);
        EXPECT_EQ(other->release(), kSuccess);
      }).join();
      const auto again = makeMutex(name);
      EXPECT_NE(again->acquire(1000), WaitResult::TimedOut) << name;
      EXPECT_EQ(again->release(), kSuccess) << name;
    }
  });
}

TEST(Mutex, ItExcludesOtherProcessesWhicheverOfThemDies) {
  constexpr int kRounds = 20;
  const auto mutex = makeMutex("contended");
  SharedNumber inside;
  std::minstd_rand random(3);
  const auto contend = [&] {
    while (true) {
      if (mutex->acquire(kInfinite) == WaitResult::Abandoned) inside->store(0);
      if (inside->fetch_add(1) != 0) return 1;
      inside->fetch_sub(1);
      if (mutex->release() != kSuccess) return 2;
    }
  };
  Forked steady(contend);
  for (int round = 0; round < kRounds; ++round) {
    Forked victim(contend);
    for (int i = static_cast<int>(random() % 100); i >= 0; --i) {
      if (mutex->acquire(kInfinite) == WaitResult::Abandoned) inside->store(0);
      ASSERT_EQ(inside->load(), 0);
      ASSERT_EQ(mutex->release(), kSuccess);
    }
    victim.kill();
  }
}

TEST(SharedObject, AnyTextIsAnObjectNameAndStaysInTheDirectory) {
  const std::string names[] = {
      "../escaped", "/tmp/escaped", "..",    ".", "...",
      "a/b",        "a\\b",         "a%2Fb", "A", "a",
      "a b\n",      "\xC3\xA4\xFF", ".x",    "%", std::string("a\0b", 3),
      "CON",        "-rf",          "*?",
  };
  std::vector<std::unique_ptr<NamedEvent>> events;
  for (const std::string& name : names) {
    events.push_back(makeEvent(name, true));
    ASSERT_NE(events.back(), nullptr) << name;
    EXPECT_EQ(events.back()->wait(0), WaitResult::TimedOut) << name << " is another name's event";
    events.back()->set();
  }
  for (const auto& entry : fs::directory_iterator(stateDirectory())) {
    EXPECT_THAT(entry.path().filename(), testing::AnyOf("objects", "registry.mdb", "registry.mdb-lock"));
  }
  EXPECT_EQ(std::distance(fs::directory_iterator(stateDirectory() / "objects"), fs::directory_iterator()),
            std::ssize(names));
}

TEST(SharedObject, ImpossibleNamesAreRefused) {
  ErrorCode error = kSuccess;
  EXPECT_EQ(NamedEvent::create(std::string(300, 'n'), true, false, kEveryone, error), nullptr);
  EXPECT_EQ(error, kNameTooLong);
  const auto event = makeEvent("kind", true);
  EXPECT_EQ(NamedMutex::create("kind", false, kEveryone, error), nullptr);
  EXPECT_EQ(error, kInvalidHandle);
  EXPECT_EQ(lastError(), kInvalidHandle);
  Forked other([] {
    ErrorCode there = kSuccess;
    return NamedMutex::create("kind", false, kEveryone, there) == nullptr && there == kInvalidHandle ? 0 : 1;
  });
  EXPECT_EQ(other.wait(), 0);
}

TEST(SharedObject, AFileThatSomebodyLeftUnfinishedIsMadeAnew) {
  fs::create_directories(stateDirectory() / "objects");
  for (const std::size_t size : {0U, 1U, 100U, 100'000U}) {
    std::ofstream(stateDirectory() / "objects" / "unfinished") << std::string(size, '\1');
    const auto mutex = makeMutex("unfinished");
    EXPECT_EQ(mutex->acquire(0), WaitResult::Signalled) << size;
    EXPECT_EQ(mutex->release(), kSuccess) << size;
  }
}

}  // namespace
}  // namespace qvn::platform
