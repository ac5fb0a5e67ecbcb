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
  void set(const std::string& key, const std::string& value, std::uint32_t client = 1) {
    Data data("<0>" + key + "</0><1>" + value + "</1>");
    gave("parameter", scanner->doExchangeData(client, data));
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
      EXPECT_EQ(scanner->doStartJob(1, nullptr), 1u) << "the failed job is still to be ended";
    });
  }
  void end(std::uint32_t client = 1) { gave("end", scanner->doEndJob(client)); }
  // The same, with the time moved on for whom it waits.
  void endInTime() {
    auto ending = std::async(std::launch::async, [this] { return scanner->doEndJob(1); });
    while (ending.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) clock.advance(4000);
    gave("end", ending.get());
  }
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

  begin("clients without a job, called by their ids for what their masks have");
  open();
  add(2, 0x3000);
  add(1, 0x6000);
  gave("register", scanner->doRegisterForAsyncData({kEverything, 1, nullptr}));
  gave("register", scanner->doRegisterForAsyncData({kEverything, 3, nullptr}));
  for (const std::string& block :
       {std::string("<Ring>"), std::string("<Scanner.CommError>"),
        notification("somebody", "fax", "rang", entries("FaxJob", "state", "Ringing")),
        notification("somebody", "system", "rang", text("Hello")), std::string("<Scan.Data>"),
        std::string("<Job.Start>"), std::string("no tag"), declared("<broken"),
        declared("<method name=\"event\"><Li><IntegerElem>no number</IntegerElem></Li></method>"),
        systemUpdate("HostSend Exited")}) {
    deliver(block);
  }
  for (int i = 0; i < 2; ++i) remove(1);
  deliver("<Ring>");
  close();
  open();
  deliver("<Ring>");
  close();

  begin("a job");
  open();
  open();
  operate();
  end();
  add(1, kEverything);
  add(1, 0x1000);
  add(2, 0x4000);
  for (const auto& [key, value] : std::initializer_list<std::pair<const char*, const char*>>{
           {"Scan.Param.Content", "3"},
           {"Scan.Param.Darkness", "-2"},
           {"Scan.Param.Contrast", ""},
           {"Scan.Param.MediaSize", "many"},
           {"Scan.Param.BitDepth", "24"},
           {"Scan.Param.Resolution", " +300dpi"},
           {"Scan.Param.Source", "99999999999"},
           {"Scan.Doc.Window.TopLeft.X", "10"},
           {"Scan.Doc.Window.BottomRight.Y", "-99999999999"},
           {"Scan.Doc.FileFormat", "1"},
       }) {
    set(key, value);
  }
  set("Scan.Doc.Compression", "7", 2);
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
  start();  // tracked no more
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
  const auto normallyBefore = before;
  const std::string exitHostMode = "callMethod system exitHostUSBSendMode";
  for (const auto& [document, answer] :
       {std::pair{"addObserver system systemUpdate Observer_System", "exception"},
        {"callMethod system enterHostUSBSendMode", "<IntegerElem>-1</IntegerElem>"},
        {"callMethod jobFactory create", "exception"}}) {
    answers = normally;
    answerTo(document, answer);
    startInVain();
    end();
  }
  answers = normally;

  scene("a lost connection, and host mode that is not left");
  start();
  fake.loseConnection();
  answerTo(exitHostMode, "nothing");
  deliverEnd();
  before.clear();
  endInTime();

  begin("ends that fail, and are tried again");
  open();
  add(1, 0x4000);
  for (const char* const document : {exitHostMode.c_str(), "removeObserver Job_1 stateChanged 407_Observer",
                                     "removeObserver system systemUpdate Observer_System"}) {
    answers = normally;
    before = normallyBefore;
    start();
    deliverEnd();
    answerTo(document, "exception");
    if (document == exitHostMode) before.erase(document);
    endInTime();
    answers = normally;
    before = normallyBefore;
    end();
  }
  before.erase(exitHostMode);  // a device that says nothing of it is believed when it has answered
  start();
  deliverEnd();
  endInTime();

  expectKept("scanner/bpd", "failures");
}

}  // namespace
}  // namespace qvn::test
