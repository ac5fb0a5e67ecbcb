// The states of a Cpd scanner: what each operation does, in which order it asks the transport, what it
// answers, and how a scan ends when several want to end it.
#include <gmock/gmock.h>

#include <future>
#include <thread>

#include "common/tasks/observation.h"
#include "scanner/cpd/scanner_fixture.h"
#include "support/other_threads.h"

namespace qvn::test {
namespace {

using testing::ElementsAre;

TEST_F(CpdScannerTest, TellsObserversOfItsStateAndOfACloseThatFailedAllTheSame) {
  struct : Observer {
    using Observer::doUpdate;
    void doUpdate(std::uint32_t handle, const std::string& state) override {
      states.push_back(std::to_string(handle) + state);
    }
    std::vector<std::string> states;
  } observer;
  const Observation observation(observer, *scanner);
  EXPECT_EQ(scanner->doOpen(), 0u);
  EXPECT_THAT(observer.states, ElementsAre("407CpdScannerOpen"));
  failCalls("close", 31);
  EXPECT_EQ(scanner->doClose(), 31u);
  EXPECT_EQ(scanner->doStartJob(1, nullptr), 1u) << "closed";
}

TEST_F(CpdScannerTest, AScanIsOverWhenItsClientsHearOfItsStatus) {
  startScan();
  ReceivedScanData::onCall = [this] { EXPECT_TRUE(refusesData()); };
  fake.deliver(status(0));
  EXPECT_THAT(ReceivedScanData::take(), ElementsAre(received(status(0))));
}

// The device may be faster than the thread that starts the scan.
TEST_F(CpdScannerTest, DataThatComesWhileTheScanIsBeingStartedIsNotLost) {
  scanner->doOpen();
  scanner->doRegisterForAsyncData({16, 1, ReceivedScanData::callback});
  std::thread device;
  fake.onWrite = [&](Data& data) {
    device = std::thread([&] {
      fake.deliver(block(1));
      fake.deliver(status(0));
    });
    waitForOthersToRest();
    EXPECT_THAT(ReceivedScanData::take(), testing::IsEmpty())
        << "whose it is shows when the command has gone out";
    data.setRc(0);
    data.setCount(data.getLength());
  };
  EXPECT_EQ(scanner->doStartJob(1, nullptr), 0u);
  device.join();
  EXPECT_THAT(ReceivedScanData::take(), ElementsAre(received(block(1)), received(status(0))));
  EXPECT_EQ(scanner->doEndJob(1), 0u);
}

TEST_F(WaitingCpdScannerTest, ACancelledScanPassesOnItsStatusOnly) {
  startScan();
  EXPECT_EQ(scanner->doCancelJob(1), 0u);
  EXPECT_THAT(fake.takeCalls(), ElementsAre("get bidi", "write 8 1B53410000000000", "release bidi"));
  fake.deliver(block(1));
  auto ending = std::async(std::launch::async, [&] { return scanner->doEndJob(1); });
  ASSERT_TRUE(clock.waitForWait(60000));
  fake.deliver(status(3));
  EXPECT_EQ(ending.get(), 0u) << "the status ends the wait";
  EXPECT_THAT(ReceivedScanData::take(), ElementsAre(received(status(3))));
  EXPECT_EQ(scanner->doStartJob(1, nullptr), 0u) << "open again";
}

TEST_F(CpdScannerTest, AStatusThatNeverComesIsWaitedForAsLongAsTheSettingSays) {
  for (const std::uint32_t duration : {60000u, 1500u}) {
    if (duration != 60000) set("ScanCancelWaitDuration", duration);
    makeScanner();
    startScan();
    fake.deliver(status(0));  // that of another scan is not this one's
    scanner->doEndJob(1);
    scanner->doStartJob(1, nullptr);
    fake.onWrite = [](Data& data) { data.setRc(1460); };  // the abort does not even get there
    scanner->doCancelJob(1);
    fake.onWrite = nullptr;
    const std::uint64_t begin = clock.monotonicMilliseconds();
    EXPECT_EQ(scanner->doEndJob(1), 0u);
    EXPECT_EQ(clock.monotonicMilliseconds() - begin, duration);
    scanner->doClose();
  }
}

TEST_F(WaitingCpdScannerTest, ASecondCancelDoesNotMakeTheEndWaitForAStatusThatHasBeen) {
  makeScanner();
  startScan();
  EXPECT_EQ(scanner->doCancelJob(1), 0u);
  EXPECT_EQ(fake.deliver(status(0)), 0u);
  EXPECT_EQ(scanner->doCancelJob(1), 0u);
  EXPECT_EQ(scanner->doEndJob(1), 0u) << "the clock stands still";
  EXPECT_EQ(scanner->doStartJob(1, nullptr), 0u);
  EXPECT_EQ(fake.deliver(block(1)), 0u) << "nothing of the old scan ends the new one";
}

}  // namespace
}  // namespace qvn::test
