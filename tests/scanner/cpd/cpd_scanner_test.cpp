// The states of a Cpd scanner: what each operation does, in which order it asks the transport, what it
// answers, and how a scan ends when several want to end it.
#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <future>
#include <thread>

#include "common/tasks/observation.h"
#include "scanner/cpd/scanner_fixture.h"
#include "support/other_threads.h"

namespace qvn::test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

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

// Every operation in every state, and the state it leaves behind.
TEST_F(CpdScannerTest, EachStateAnswersEachOperation) {
  const std::string states = "COSEX";  // Closed, Open, Scanning, EndJobPending, Cancel
  const auto bring = [&](char state) {
    closeScanner();
    makeScanner();
    if (state == 'C') return;
    scanner->doOpen();
    if (state == 'O') return;
    scanner->doStartJob(1, nullptr);
    if (state == 'E') fake.deliver(status(0));
    if (state == 'X') scanner->doCancelJob(1);
  };
  Data data("x");
  const auto current = [&] {
    if (scanner->openCount() == 0) return 'C';
    if (scanner->doExchangeData(1, data = Data("x")) == 0) return 'O';
    // Ended just now: Cancel differs from EndJobPending in what happens to scan data.
    return scanner->doEndJob(1) == 1 ? 'S' : 'E';
  };
  Data command = bytes({0x1B, 'S', 'V', 0, 0, 0, 0, 0});
  Data response;
  const AsyncDataRegistration registration{0, 1, ReceivedScanData::callback};
  const auto accept = [&] { return refusesData() ? 1u : 0u; };
  const struct {
    const char* name;
    std::function<std::uint32_t()> call;
    std::uint32_t results[5];
    const char* after;
    const char* writesIn = "";  // the state
  } operations[] = {
      {"open", [&] { return scanner->doOpen(); }, {0, 0, 0, 0, 0}, "OOSEE"},
      {"close", [&] { return scanner->doClose(); }, {0, 0, 0, 0, 0}, "CCCCC"},
      {"startJob", [&] { return scanner->doStartJob(1, nullptr); }, {1, 0, 1, 1, 1}, "CSSEE", "O"},
      {"endJob", [&] { return scanner->doEndJob(1); }, {1, 1, 1, 0, 0}, "COSOO"},
      {"cancelJob", [&] { return scanner->doCancelJob(1); }, {1, 1, 0, 0, 0}, "COEEE", "S"},
      {"send", [&] { return scanner->doExchangeData(1, data); }, {1, 0, 1, 1, 1}, "COSEE", "O"},
      {"ask", [&] { return scanner->doExchangeData(1, command, response); }, {1, 1460, 1, 1, 1}, "COSEE"},
      {"register", [&] { return scanner->doRegisterForAsyncData(registration); }, {1, 0, 0, 0, 0}, "COSEE"},
      {"unregister", [&] { return scanner->doUnregisterForAsyncData(1); }, {1, 0, 0, 0, 0}, "COSEE"},
      {"lost", [&] { return scanner->doOnConnectionLost(); }, {1, 1, 0, 1, 1}, "COEEE"},
      {"accept", accept, {1, 0, 0, 1, 0}, "COSEE"},
  };
  for (const auto& operation : operations) {
    for (std::size_t i = 0; i < states.size(); ++i) {
      SCOPED_TRACE(std::string(operation.name) + " in state " + states[i]);
      bring(states[i]);
      fake.takeCalls();
      EXPECT_EQ(operation.call(), operation.results[i]);
      EXPECT_EQ(fake.calls("write").size(), std::string(operation.writesIn) == states.substr(i, 1) ? 1u : 0u);
      std::uint32_t value = 7;
      EXPECT_EQ(scanner->doGetCurrentState(value), 0u);
      EXPECT_EQ(value, 0u);
      EXPECT_EQ(current(), operation.after[i]);
    }
  }
}

TEST_F(CpdScannerTest, AScanGoesFromGoToTheEndOfTheJob) {
  scanner->doOpen();
  scanner->doRegisterForAsyncData({16, 1, ReceivedScanData::callback});
  fake.onWrite = [](Data& data) { data.setRc(64); };
  EXPECT_EQ(scanner->doStartJob(1, nullptr), 64u) << "the command cannot be written: still open";
  fake.onWrite = nullptr;
  fake.takeCalls();
  EXPECT_EQ(scanner->doStartJob(1, nullptr), 0u);
  EXPECT_THAT(fake.takeCalls(), ElementsAre("get bidi", "write 8", "release bidi"));
  EXPECT_THAT(fake.written(), EndsWith(std::string("\x1BSG\0\0\0\0\0", 8)));
  EXPECT_EQ(fake.deliver(block(1)), 0u);
  ReceivedScanData::onCall = [this] { EXPECT_TRUE(refusesData()) << "over when the clients hear of it"; };
  fake.deliver(status(0));
  EXPECT_THAT(ReceivedScanData::take(), ElementsAre(received(block(1)), received(status(0))));
  EXPECT_TRUE(refusesData());
  EXPECT_EQ(scanner->doEndJob(1), 0u);
  EXPECT_THAT(ReceivedScanData::take(), IsEmpty());
  EXPECT_EQ(scanner->doStartJob(1, nullptr), 0u) << "the next page";
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
    EXPECT_THAT(ReceivedScanData::take(), IsEmpty()) << "whose it is shows when the command has gone out";
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
  EXPECT_THAT(fake.takeCalls(), ElementsAre("get bidi", "write 8", "release bidi"));
  EXPECT_THAT(fake.written(), EndsWith(std::string("\x1BSA\0\0\0\0\0", 8)));
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
