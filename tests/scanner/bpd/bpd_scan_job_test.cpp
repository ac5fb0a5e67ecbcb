// The jobs of a Bpd scanner: how they are started, go on, are watched over and end.
#include <gmock/gmock.h>

#include <future>

#include "scanner/bpd/bpd_scanner_fixture.h"
#include "support/other_threads.h"

namespace qvn::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr char kObserveSystem[] = "addObserver system systemUpdate Observer_System";
constexpr char kEnter[] = "callMethod system enterHostUSBSendMode";
constexpr char kCreate[] = "callMethod jobFactory create";
constexpr char kObserveState[] = "addObserver Job_1 stateChanged 407_Observer";
constexpr char kObservePages[] = "addObserver Job_1 pageScanned 407_Observer";
constexpr char kStart[] = "callMethod Job_1 start";
constexpr char kDone[] = "callMethod Job_1.scanJob done";
constexpr char kCancel[] = "callMethod Job_1 cancel";
constexpr char kLeave[] = "callMethod system exitHostUSBSendMode";
constexpr char kUnobserveState[] = "removeObserver Job_1 stateChanged 407_Observer";
constexpr char kUnobservePages[] = "removeObserver Job_1 pageScanned 407_Observer";
constexpr char kUnobserveSystem[] = "removeObserver system systemUpdate Observer_System";

constexpr platform::Milliseconds kFirstWait = 25000;

// Time stands still: a wait ends by what it waits for, or when the test moves the time.
class BpdScanJobTest : public StandingClock, public BpdScannerTest {
 protected:
  BpdScanJobTest() { clock.advance(1); }  // request ids begin with the time

  // Starts a job, of a scanner that is opened for it when it is not; it runs when this returns.
  void startJob() {
    if (scanner->openCount() == 0) openFor();
    ASSERT_EQ(scanner->doStartJob(1, nullptr), 0u);
    ASSERT_TRUE(clock.waitForWait(multiplier * kFirstWait));
    takeSent();
    ReceivedBpdData::take();
  }

  std::future<std::uint32_t> inBackground(std::function<std::uint32_t()> call) {
    return std::async(std::launch::async, std::move(call));
  }
  // The result, with the time moved on by steps until it is there.
  std::uint32_t advancing(std::future<std::uint32_t>& call, platform::Milliseconds step) {
    while (call.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) clock.advance(step);
    return call.get();
  }
  std::future<std::uint32_t> endInBackground() {
    return inBackground([this] { return scanner->doEndJob(1); });
  }

  static bool waitFor(const std::string& received) {
    return eventually([&] { return std::ranges::count(ReceivedBpdData::all(), received) > 0; });
  }
  bool waitForSent(const std::string& what) {
    return eventually([&] { return std::ranges::count(sent(), what) > 0; });
  }
  // A document that the device leaves unanswered, brought about and sent.
  void leaveUnanswered(const std::string& document, const std::function<void()>& bringAbout) {
    fake.awaitsReplies = true;
    answerTo(document, "nothing");
    bringAbout();
    EXPECT_TRUE(waitForSent(document));
  }
  // The job ends in the device, and then for the client.
  void endJob() {
    deliverEnd();
    EXPECT_EQ(scanner->doEndJob(1), 0u);
    ReceivedBpdData::take();
  }

  std::uint32_t multiplier = 1;
};

TEST_F(BpdScanJobTest, AStartThatFailsTellsWhyAndLeavesHostMode) {
  const auto failHostMode = [this] { deliver(systemUpdate("Enter HostSend Fail")); };
  const struct {
    const char* what;
    const char* document;
    const char* answer;
    std::function<void()> before;  // of host mode
    std::uint32_t rc;
    const char* last;  // document sent
  } rows[] = {
      {"no observer", kObserveSystem, "exception", {}, 87, kObserveSystem},
      {"host mode raises", kEnter, "exception", {}, 87, kLeave},
      {"host mode refused", kEnter, "<IntegerElem>-1</IntegerElem>", {}, 170, kEnter},
      {"the transport is busy", kEnter, "busy", {}, 170, kLeave},
      {"host mode failed", kEnter, "<IntegerElem>0</IntegerElem>", failHostMode, 1460, kLeave},
      {"no job", kCreate, "exception", {}, 87, kLeave},
      {"a job without name", kCreate, "<NullElem/>", {}, 1359, kLeave},
      {"a job whose name is a list", kCreate, "<ListElem></ListElem>", {}, 1359, kLeave},
      {"a job whose name has markup", kCreate, "<StringElem>a&lt;b</StringElem>", {}, 1359, kLeave},
      {"state not observed", kObserveState, "exception", {}, 87, kLeave},
      {"pages not observed", kObservePages, "nothing", {}, 1460, kLeave},
      {"start raises", kStart, "exception", {}, 1359, kLeave},
      {"start refused", kStart, "<IntegerElem>-1</IntegerElem>", {}, 1359, kLeave},
      {"start unanswered", kStart, "nothing", {}, 1460, kLeave},
      {"started", kStart, "<NullElem/>", {}, 0, kStart},
  };
  const auto normalAnswers = answers;
  const auto normalBefore = before;
  openFor();
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    answers = normalAnswers;
    before = normalBefore;
    answerTo(row.document, row.answer);
    if (row.before) before[kEnter] = row.before;
    fake.onVisitor = [&](const std::string&, const Data* data) {
      return std::string(row.answer) == "busy" && summary(asText(*data)) == row.document ? 170u : 0u;
    };
    scanner->job().setInHostMode(false);
    std::string job;
    EXPECT_EQ(BpdScanStartJobTask(*scanner, 1, job).execute(), row.rc);
    EXPECT_EQ(takeSent().back(), row.last);
    const bool created =
        row.document == kStart || row.document == kObserveState || row.document == kObservePages;
    EXPECT_EQ(job, created ? "Job_1" : "");
  }
}

TEST_F(BpdScanJobTest, HostModeIsAwaitedForAsLongAsDataComes) {
  openFor();
  before[kEnter] = [] {};
  std::string job;
  auto start = inBackground([&] { return BpdScanStartJobTask(*scanner, 1, job).execute(); });
  ASSERT_TRUE(clock.waitForWait(15000));
  deliver("<Scan.Data>of another job");
  clock.advance(15000);
  ASSERT_TRUE(clock.waitForWait(15000));
  EXPECT_THAT(sent(), Not(Contains(kLeave)));
  clock.advance(15000);
  EXPECT_EQ(start.get(), 1460u);
  EXPECT_EQ(takeSent().back(), kLeave);
}

TEST_F(BpdScanJobTest, AnEndCancelsAJobThatRunsAndWaitsForItsEnd) {
  startJob();
  before[kCancel] = [] {};
  deliver("<Page.Start>");
  ReceivedBpdData::take();
  auto end = endInBackground();
  ASSERT_TRUE(clock.waitForWait(250));
  EXPECT_TRUE(clock.waitForWait(10000)) << "the watchdog gives the device so long";
  // A second end gives up after trying for a moment.
  for (const auto& [clientId, rc] : {std::pair(1u, 5u), std::pair(2u, 87u)}) {
    auto second = inBackground([this, client = clientId] { return scanner->doEndJob(client); });
    ASSERT_TRUE(clock.waitForWait(1));
    clock.advance(1);
    EXPECT_EQ(second.get(), rc);
  }
  deliver("<Scan.Data>last");
  deliverEnd();
  clock.advance(250);
  EXPECT_EQ(end.get(), 0u);
  EXPECT_THAT(ReceivedBpdData::take(), ElementsAre("1/1/2000: Job.Cancelling", "1/1/1000: last",
                                                   "1/1/4000: Complete", "1/1/2000: Job.End"));
  EXPECT_THAT(takeSent(), ElementsAre(kCancel, kLeave, kUnobserveState, kUnobservePages, kUnobserveSystem));
  startJob();
  before[kCancel] = [this] { deliverEnd(); };
  answerTo(kCancel, "exception");
  EXPECT_EQ(scanner->doEndJob(1), 0u) << "a cancel that fails is no failure of the end";
}

TEST_F(BpdScanJobTest, ACancelThatNothingFollowsIsGivenUpByTheWatchdog) {
  startJob();
  before[kCancel] = [] {};
  auto end = endInBackground();
  ASSERT_TRUE(clock.waitForWait(250));
  ASSERT_TRUE(clock.waitForWait(10000));
  clock.advance(10000);
  EXPECT_EQ(advancing(end, 250), 0u) << "it looks every so often whether the job has ended";
  EXPECT_THAT(ReceivedBpdData::take(), ElementsAre("1/1/2000: Job.Cancelling", "1/1/2000: Job.DataTimeout",
                                                   "1/1/2000: Scan.Error", "1/1/2000: Job.End"));
  startJob();
}

// How long the next sign of the job may take, by the signs that came before.
TEST_F(BpdScanJobTest, TheWatchdogWaitsByWhatItHeard) {
  const auto state = [this](const char* value) { return [this, value] { deliverState(value); }; };
  const auto block = [this](const char* value) { return [this, value] { deliver(value); }; };
  const auto readError = [this] {
    Data failed;
    failed.setRc(64);
    fake.deliver(failed);
  };
  const struct {
    const char* what;
    std::function<void()> deliver;
    platform::Milliseconds wait;
  } signs[] = {
      {"warming", state("Warming"), 90000},
      {"data, for the first time", block("<Scan.Data>x"), 15000},
      {"data", block("<Scan.Data>x"), 6000},
      {"a page begins", block("<Page.Start>"), 6000},
      {"data, for the first time", block("<Scan.Data>x"), 15000},
      {"data", block("<Scan.Data>x"), 6000},
      {"a page ends", block("<Page.End>"), 15000},
      {"a read fails", readError, 6000},
      {"data, still for the first time", block("<Scan.Data>x"), 15000},
  };
  for (const std::uint32_t times : {1u, 2u}) {
    multiplier = times;
    openFor();
    setParameter("TimeoutX", std::to_string(times));
    startJob();
    for (const auto& sign : signs) {
      SCOPED_TRACE(sign.what);
      sign.deliver();
      ASSERT_TRUE(clock.waitForWait(times * sign.wait));
      // A wait as long as this one is then told from it by its end.
      clock.advance(1);
    }
    readError();
    readError();
    ASSERT_TRUE(clock.waitForWait(times * 6000));
    clock.advance(times * 6000 - 1);
    readError();
    clock.advance(1);
    EXPECT_TRUE(waitFor("1/1/2000: Job.DataTimeout")) << "reads that fail are no sign of life";
    EXPECT_EQ(scanner->doEndJob(1), 0u);
    scanner->doClose();
  }
}

TEST_F(BpdScanJobTest, TheMultiplierIsTheClientsOrTheSettings) {
  const struct {
    const char* parameter;
    std::uint32_t setting;
    std::uint32_t expected;
  } rows[] = {{"", 0, 1}, {"0", 3, 3}, {"2", 3, 2}, {"2x", 0, 2}, {"4294967295", 0, 4294967295u}};
  openFor();
  for (const auto& row : rows) {
    ASSERT_TRUE(ApplicationSettings().setLong(setting_key::kUsb1Settings, "Usb1BpdScanTimeoutMultiplier",
                                              row.setting, SettingsStore::kLocal));
    setParameter("TimeoutX", row.parameter);
    ASSERT_EQ(scanner->doStartJob(1, nullptr), 0u);
    EXPECT_THAT(ReceivedBpdData::take(),
                ElementsAre(testing::EndsWith("/2000: TimeoutX=" + std::to_string(row.expected))));
    const std::uint64_t wait = std::uint64_t{row.expected} * kFirstWait;
    EXPECT_TRUE(clock.waitForWait(static_cast<std::uint32_t>(std::min<std::uint64_t>(wait, 0xFFFFFFFE))));
    endJob();
  }
}

TEST_F(BpdScanJobTest, AJobThatFallsSilentIsEndedForTheClientThatDoesNot) {
  openFor();
  for (const bool clientEnds : {true, false}) {
    SCOPED_TRACE(clientEnds);
    startJob();
    deliver("<Job.Start>");
    deliver("<Scan.Data>half");
    ASSERT_TRUE(clock.waitForWait(15000));
    ReceivedBpdData::take();
    clock.advance(15000);
    EXPECT_TRUE(waitFor("1/1/2000: Job.End"));
    ASSERT_TRUE(clock.waitForWait(10000)) << "for the client";
    EXPECT_THAT(ReceivedBpdData::take(),
                ElementsAre("1/1/2000: Job.DataTimeout", "1/1/2000: Scan.Error", "1/1/2000: Job.End"));
    deliver("<Scan.Data>late");
    EXPECT_THAT(ReceivedBpdData::take(), IsEmpty());
    takeSent();
    if (clientEnds) {
      EXPECT_EQ(scanner->doEndJob(1), 0u);
    } else {
      clock.advance(10000);
      ASSERT_TRUE(eventually([&] { return !scanner->job().isActive(); }));
    }
    ASSERT_TRUE(waitForSent(kUnobserveSystem));
    EXPECT_THAT(takeSent(), ElementsAre(kLeave, kUnobserveState, kUnobservePages, kUnobserveSystem));
    EXPECT_EQ(scanner->doEndJob(1), 1u) << "there is no job any more";
  }
}

TEST_F(BpdScanJobTest, TheWatchdogOfOneJobLeavesTheNextOneAlone) {
  startJob();
  clock.advance(kFirstWait);
  EXPECT_TRUE(waitFor("1/1/2000: Job.End"));
  ASSERT_TRUE(clock.waitForWait(10000));
  EXPECT_EQ(scanner->doClose(), 0u);
  startJob();
  clock.advance(10000);
  waitForOthersToRest();
  EXPECT_TRUE(scanner->isScanning());
  EXPECT_EQ(scanner->doEndJob(1), 0u);
}

TEST_F(BpdScanJobTest, AClientMayEndAJobThatIsBeingStarted) {
  openFor();
  before[kEnter] = [] {};
  ASSERT_EQ(scanner->doStartJob(1, nullptr), 0u);
  ASSERT_TRUE(clock.waitForWait(15000)) << "for host mode";
  EXPECT_EQ(scanner->doEndJob(1), 0u);
  EXPECT_THAT(sent(), Not(Contains(kCreate)));
  EXPECT_THAT(ReceivedBpdData::take(), ElementsAre("1/0/2000: TimeoutX=1")) << "no failure to be told of";
  before[kEnter] = [this] { deliver(systemUpdate("Enter HostSend OK")); };
  leaveUnanswered(kStart, [this] { ASSERT_EQ(scanner->doStartJob(1, nullptr), 0u); });
  takeSent();
  EXPECT_EQ(scanner->doEndJob(1), 0u) << "without waiting for the reply";
  EXPECT_THAT(sent(), Contains(kLeave));
  answers.erase(kStart);
  startJob();
}

// At any moment of a job: nothing of it runs or calls any more once the close has returned.
TEST_F(BpdScanJobTest, ACloseEndsEverythingThatGoesOn) {
  const struct {
    const char* moment;
    std::function<void()> bring;
  } rows[] = {
      {"a document of the start unanswered",
       [this] { leaveUnanswered(kCreate, [this] { scanner->doStartJob(1, nullptr); }); }},
      {"host mode awaited",
       [this] {
         before[kEnter] = [] {};
         scanner->doStartJob(1, nullptr);
         EXPECT_TRUE(clock.waitForWait(15000));
       }},
      {"the job running", [this] { startJob(); }},
      {"a send in the background",
       [this] {
         startJob();
         leaveUnanswered(kDone, [this] { deliverState("Wait Next Original"); });
       }},
      {"the watchdog waiting for the client",
       [this] {
         startJob();
         clock.advance(kFirstWait);
         EXPECT_TRUE(clock.waitForWait(10000));
       }},
  };
  const auto normalAnswers = answers;
  const auto normalBefore = before;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.moment);
    openFor();
    row.bring();
    EXPECT_EQ(scanner->doClose(), 0u);
    EXPECT_EQ(fake.held(), "") << "nothing uses the connection any more";
    EXPECT_FALSE(scanner->isScanning() || scanner->job().isActive() || scanner->job().isInHostMode());
    takeSent();
    ReceivedBpdData::take();
    deliver("<Ring>");
    clock.advance(100000);
    waitForOthersToRest();
    EXPECT_THAT(ReceivedBpdData::take(), IsEmpty());
    EXPECT_THAT(sent(), IsEmpty());
    answers = normalAnswers;
    before = normalBefore;
    fake.awaitsReplies = false;
  }
  startJob();
}

TEST_F(BpdScanJobTest, TheLastCloseWaitsForTheExchangeThatItCancels) {
  openFor();
  std::promise<void> inside;
  std::promise<void> goOn;
  fake.onCall = [&](const char* call) {
    if (call == std::string("visit")) {
      inside.set_value();
      goOn.get_future().wait();
    }
    return 0u;
  };
  std::thread exchanging([&] { scanner->objectStore().exchange(callMethod("system", "ping", nullptr)); });
  inside.get_future().wait();
  std::atomic<bool> closed{false};
  std::thread closing([&] {
    scanner->doClose();
    closed = true;
  });
  waitForOthersToRest();
  EXPECT_FALSE(closed) << "its connection is in use";
  goOn.set_value();
  exchanging.join();
  closing.join();
  fake.onCall = nullptr;
}

TEST_F(BpdScanJobTest, OfTwoBackgroundSendsTheFirstIsGivenUp) {
  startJob();
  for (int i = 0; i < 2; ++i) {
    takeSent();
    leaveUnanswered(kDone, [this] { deliverState("Wait Next Original"); });
  }
  EXPECT_THAT(fake.calls("cancel"), testing::SizeIs(1));
  takeSent();
  deliver(notification("407_Observer", "a&lt;b", "stateChanged",
                       entries("ScanJob", "state", "Wait Next Original")));
  EXPECT_THAT(sent(), IsEmpty()) << "a name that would change the document";
  // A transport may deliver on the thread of the send, which cannot end itself.
  fake.awaitsReplies = false;
  std::atomic<int> asked{0};
  before[kDone] = [&] {
    if (++asked < 3) deliverState("Wait Next Original");
  };
  deliverState("Wait Next Original");
  EXPECT_TRUE(waitForSent(kDone));
  waitForOthersToRest();
  EXPECT_EQ(asked, 1);
}

TEST_F(BpdScanJobTest, WhatTheDeviceSendsMayMeetWhatClientsDo) {
  startJob();
  BpdScanAsyncDataTask task(*scanner);
  const auto registerAs = [&](std::uint32_t client) {
    return [&task, client] {
      EXPECT_EQ(task.registerClient(client, kEverything, nullptr), 0u);
      task.unregisterClient(client);
    };
  };
  const std::function<void()> meanwhile[] = {[&] {
                                               task.startJob(1);
                                               task.endJob();
                                               task.jobHasEnded();
                                             },
                                             registerAs(1), registerAs(2)};
  std::atomic<bool> isOver{false};
  std::vector<std::future<void>> working;
  for (const auto& work : meanwhile) {
    working.push_back(std::async(std::launch::async, [&] {
      while (!isOver) work();
    }));
  }
  const std::string complete =
      notification("407_Observer", "Job_1", "stateChanged", entries("ScanJob", "state", "Complete"));
  for (int i = 0; i < 1000; ++i) {
    for (const std::string& block :
         {std::string("<Job.Start>"), std::string("<Scan.Data>x"), std::string("<Job.End>"), complete}) {
      Data data(block);
      task.updateClients(data);
    }
  }
  isOver = true;
  for (auto& thread : working) thread.get();
  task.endJob();
  EXPECT_TRUE(task.jobHasEnded());
  ReceivedBpdData::take();
  task.registerClient(3, kEverything, ReceivedBpdData::callback);
  deliver("<Ring>");
  EXPECT_THAT(ReceivedBpdData::take(), testing::UnorderedElementsAre("1/1/2000: Ring", "3/1/2000: Ring"))
      << "attached once";
  task.unregisterClient(3);
  endJob();
}

TEST_F(BpdScanJobTest, TwoClientsThatEndOneJobAtOnceEndItOnce) {
  openFor();
  for (int round = 0; round < 20; ++round) {
    startJob();
    deliverEnd();
    auto first = endInBackground();
    auto second = endInBackground();
    // Whoever comes second tries for a moment.
    const std::uint32_t codes[] = {advancing(first, 1), advancing(second, 1)};
    EXPECT_EQ(std::count(std::begin(codes), std::end(codes), 0u), 1);
    for (const std::uint32_t code : codes) EXPECT_TRUE(code == 0 || code == 1 || code == 5) << code;
    EXPECT_THAT(takeSent(), ElementsAre(kLeave, kUnobserveState, kUnobservePages, kUnobserveSystem));
  }
}

}  // namespace
}  // namespace qvn::test
