#include <gmock/gmock.h>

#include <atomic>
#include <future>
#include <thread>
#include <vector>

#include "api/client_id.h"
#include "device/store/hid_store.h"
#include "device/store/printer_store.h"
#include "device/store/scanner_store.h"
#include "platform/threads/thread.h"
#include "support/library_fixture.h"
#include "support/manual_clock.h"
#include "support/other_threads.h"

namespace qvn::test {
namespace {

TEST(Initialization, Nests) {
  EXPECT_EQ(QvnInitialize(), 0u);
  EXPECT_EQ(QvnInitialize(), 0u);
  EXPECT_EQ(QvnUninitialize(), 0u);
  EXPECT_EQ(QvnSuspend(), 0u);
  EXPECT_EQ(QvnUninitialize(), 0u);
  EXPECT_EQ(QvnSuspend(), 1u);
  EXPECT_EQ(QvnUninitialize(), 0u);
  EXPECT_EQ(QvnInitialize(), 0u);
  EXPECT_EQ(QvnSuspend(), 0u) << "calls too many do not count below 0";
  EXPECT_EQ(QvnUninitialize(), 0u);
}

TEST(ClientIds, StartAtTheTickCountAndRiseByOneWithoutZero) {
  ManualClock clock;
  clock.advance(0xFFFFFFFE);
  std::uint32_t id = 0;
  for (const std::uint32_t expected : {0xFFFFFFFEu, 0xFFFFFFFFu, 1u, 2u}) {
    EXPECT_EQ(QvnGetClientId(&id), 0u);
    EXPECT_EQ(id, expected);
  }
}

TEST(Initialization, KeepsNoThreadBeyondItsEnd) {
  static std::atomic<int> ends{0};
  struct Ended {
    ~Ended() { ++ends; }
    std::uint32_t code = 0;
  };
  ASSERT_EQ(QvnInitialize(), 0u);
  platform::ErrorCode error = platform::kSuccess;
  const auto touch = [] {
    static thread_local const Ended ended;
    return ended.code;
  };
  platform::ThreadHandle::start(touch, 0, error).reset();
  EXPECT_EQ(ends, 0) << "it waits for the next task";
  EXPECT_EQ(QvnUninitialize(), 0u);
  EXPECT_EQ(ends, 1);
}

TEST(ClientIds, AreEachGivenOnce) {
  constexpr std::uint32_t kTimes = 3000000;
  const std::uint32_t first = nextClientId();
  const auto take = [] {
    for (std::uint32_t i = 0; i < kTimes; ++i) nextClientId();
  };
  std::thread other(take);
  take();
  other.join();
  EXPECT_EQ(nextClientId(), first + 2 * kTimes + 1);
}

// What the callback of an enumeration does; run on the calling thread inside the exported call.
std::function<void()> duringCallback;
void found(std::uint32_t, std::uint32_t) { duringCallback(); }

class InitializationTest : public LibraryTest {
 protected:
  InitializationTest() { PrinterStore::getInstance().persist(FakeTransport::printerText(7)); }
};

TEST_F(InitializationTest, TheLastUninitialisationWaitsForACallInFlight) {
  std::promise<void> inside;
  std::promise<void> goOn;
  std::atomic<bool> isDown{false};
  duringCallback = [&] {
    inside.set_value();
    goOn.get_future().wait();
    EXPECT_EQ(QvnSuspend(), 0u) << "the library is still there for the call";
  };
  std::thread caller([&] { EXPECT_EQ(QvnEnumPrinters(1, "FAKE", nullptr, found), 0u); });
  inside.get_future().wait();
  std::thread uninitializer([&] {
    EXPECT_EQ(QvnUninitialize(), 0u);
    isDown = true;
  });
  while (QvnSuspend() == 0) std::this_thread::yield();  // no new calls any more
  waitForOthersToRest();
  EXPECT_FALSE(isDown);
  goOn.set_value();
  uninitializer.join();
  caller.join();
  EXPECT_EQ(QvnInitialize(), 0u);
}

TEST_F(InitializationTest, TheLastUninitialisationClosesWhatIsOpenBeforeItsTransportGoes) {
  ScannerStore::getInstance().persist(FakeTransport::deviceText("CpdScanner", 407));
  HidStore::getInstance().persist(FakeTransport::deviceText("CpdHid", 807));
  EXPECT_EQ(QvnOpenPrinter(1, 7), 0u);
  EXPECT_EQ(QvnOpenScanner(1, 407), 0u);
  EXPECT_EQ(QvnOpenHid(1, 807), 0u);
  fake.takeCalls();
  EXPECT_EQ(QvnUninitialize(), 0u);
  EXPECT_THAT(fake.takeCalls(), testing::ElementsAre("get bidi", "close bidi", "release bidi", "get bidi",
                                                     "close bidi", "release bidi", "get alert", "close alert",
                                                     "release alert", "uninitialize"));
  EXPECT_EQ(QvnInitialize(), 0u);
}

TEST_F(InitializationTest, InsideACallbackAllButTheLastUninitialisationCount) {
  duringCallback = [] {
    EXPECT_EQ(QvnUninitialize(), 170u);
    EXPECT_EQ(QvnInitialize(), 0u);
    EXPECT_EQ(QvnUninitialize(), 0u);
  };
  EXPECT_EQ(QvnEnumPrinters(1, "FAKE", nullptr, found), 0u);
  EXPECT_EQ(QvnSuspend(), 0u) << "nothing has changed";
  EXPECT_EQ(QvnUninitialize(), 0u);
  EXPECT_EQ(QvnSuspend(), 1u);
  EXPECT_EQ(QvnUninitialize(), 0u) << "one too many does no harm";
  EXPECT_EQ(QvnInitialize(), 0u);
}

TEST_F(InitializationTest, EightThreadsMayCallInitialiseAndUninitialiseAtOnce) {
  duringCallback = [] {};
  std::vector<std::thread> threads;
  for (int t = 0; t < 8; ++t) {
    threads.emplace_back([t] {
      for (int i = 0; i < 50; ++i) {
        if ((i + t) % 3 == 0) {
          EXPECT_EQ(QvnInitialize(), 0u);
        }
        std::uint32_t value = 0;
        const std::uint32_t rc = QvnGetLongPrinter(1, 7, "<Name>Handle</Name><Type>Long</Type>", &value);
        EXPECT_TRUE(rc == 0 || rc == 1) << rc;
        QvnEnumPrinters(1, "FAKE", nullptr, found);
        if (QvnOpenPrinter(1, 7) == 0) {
          QvnClosePrinter(1, 7);
        }
        EXPECT_EQ(QvnUninitialize(), 0u);
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(QvnInitialize(), 0u);
}

}  // namespace
}  // namespace qvn::test
