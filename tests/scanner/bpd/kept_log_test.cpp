// What a Bpd scanner does and writes.
#include <gmock/gmock.h>

#include <future>

#include "scanner/bpd/bpd_scanner_fixture.h"
#include "support/kept_log/kept_log.h"

namespace qvn::test {
namespace {

// Time stands still, so that the threads of a job wait for each other or for the test.
class KeptBpdScannerTest : public KeptLog, public StandingClock, public BpdScannerTest {
 protected:
  KeptBpdScannerTest() {
    clock.advance(1);  // request ids begin with the time
    ReceivedBpdData::onCall = [this](const std::string& received) { heard(received); };
    // What is sent in the background waits until its sender has written that it is.
    fake.onCall = [this](const char* call) {
      const std::string scope = "ObjectStoreBidiTask::doExecuteBackground()";
      while (call == std::string("getVisitor") && times("+" + scope) != times("-" + scope)) {
        std::this_thread::yield();
      }
      return 0u;
    };
  }

  void begin(const std::string& name) {
    scene(name);
    scanner = std::make_unique<BpdScanner>();
    scanner->setAttributes(FakeTransport::deviceText("BpdScanner", 407));
  }
  void open() { gave("open", scanner->doOpen()); }
  void add(std::uint32_t client, std::uint32_t mask) {
    gave("register", scanner->doRegisterForAsyncData({mask, client, ReceivedBpdData::callback}));
  }
  void remove(std::uint32_t client) { gave("unregister", scanner->doUnregisterForAsyncData(client)); }
  void set(const std::string& key, const std::string& value) {
    Data data("<0>" + key + "</0><1>" + value + "</1>");
    gave("parameter", scanner->doExchangeData(1, data));
  }
  // Until the job waits for its data, or is none.
  void start() {
    besideOthers([this] {
      EXPECT_EQ(scanner->doStartJob(1, nullptr), 0u);
      EXPECT_EQ(scanner->doStartJob(2, nullptr), 170u);
      EXPECT_TRUE(clock.waitForWait(25000));
    });
  }
  void startInVain() {
    besideOthers([this] {
      EXPECT_EQ(scanner->doStartJob(1, nullptr), 0u);
      EXPECT_TRUE(eventually([this] { return !scanner->job().isActive(); }));
    });
  }
  void end(std::uint32_t client = 1) { gave("end", scanner->doEndJob(client)); }
  void close() { gave("close", scanner->doClose()); }
  void operate() {
    Data data("x");
    gave("exchange", scanner->doExchangeData(1, data, data));
    gave("cancel", scanner->doCancelJob(1));
    std::uint32_t state = 0;
    gave("state", scanner->doGetCurrentState(state));
  }
};

TEST_F(KeptBpdScannerTest, Jobs) {
  begin("a closed scanner");
  close();
  operate();
  gave("start", scanner->doStartJob(1, nullptr));
  end();
  add(1, kEverything);
  remove(1);
  set("Track", "1");
  fake.onOpen = [](const std::string&) { return 1225u; };
  open();
  fake.onOpen = nullptr;

  begin("a job");
  open();
  open();
  operate();
  end();
  add(1, kEverything);
  add(1, 0x1000);
  add(2, 0x4000);
  set("Scan.Param.Resolution", "300");
  start();
  set("Track", "1");
  end(2);
  deliverState("Warming");
  deliverState("Scanning");
  for (const char* const block :
       {"<Job.Start>", "<Page.Start>", "<Scan.Data>dots", "<Page.End>", "<Other.Event>", "no tag"}) {
    deliver(block);
  }
  for (const char* const source : {"Flatbed", "ADF"}) {
    deliver(notification("407_Observer", "Job_1", "pageScanned", entries("HostSendJob", "source", source)));
  }
  deliver(notification("another", "Job_1", "stateChanged", entries("ScanJob", "state", "Idle")));
  const std::string exchanged = "release visitor objectStoreDataVisitor";
  const std::size_t exchanges = times(exchanged);
  deliverState("Wait Next Original");
  EXPECT_TRUE(eventually([&] { return times(exchanged) > exchanges; }));
  deliver("<Job.End>");
  deliverState("Complete");
  deliver("<Scan.Data>late");
  deliver("<Page.Start>");
  end();
  end();
  remove(1);
  remove(2);
  close();
  close();

  begin("a job that is tracked, and cancelled");
  open();
  add(1, kEverything);
  set("Track", "1");
  set("TimeoutX", "1");
  start();
  Data failed;
  failed.setRc(31);
  fake.deliver(failed);
  end();
  close();

  begin("a job whose data stop");
  open();
  add(1, 0x6000);
  start();
  const std::size_t ends = times("-BpdScanner::doEndJob()");
  clock.advance(25000);
  EXPECT_TRUE(clock.waitForWait(10000));
  clock.advance(10000);
  EXPECT_TRUE(eventually([&] { return times("-BpdScanner::doEndJob()") > ends; }));
  close();

  expectKept("scanner/bpd", "jobs");
}

TEST_F(KeptBpdScannerTest, Failures) {
  begin("jobs that cannot be started");
  open();
  add(1, 0x4000);
  const auto normally = answers;
  for (const auto& [document, answer] :
       {std::pair{"addObserver system systemUpdate Observer_System", "exception"},
        {"callMethod system enterHostUSBSendMode", "<IntegerElem>-1</IntegerElem>"}}) {
    answers = normally;
    answerTo(document, answer);
    startInVain();
    end();
  }
  answers = normally;

  scene("a lost connection, and host mode that is not left");
  start();
  fake.loseConnection();
  answerTo("callMethod system exitHostUSBSendMode", "nothing");
  deliverEnd();
  before.clear();
  auto ending = std::async(std::launch::async, [this] { return scanner->doEndJob(1); });
  while (ending.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) clock.advance(4000);
  gave("end", ending.get());

  expectKept("scanner/bpd", "failures");
}

}  // namespace
}  // namespace qvn::test
