// Each fault that the scanner of a simulated BpdPrinter can be told to have.
#include <gmock/gmock.h>

#include "support/simulator/object_host.h"

namespace qvn::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// 100 dots, 50 lines of gray in blocks of 1000 bytes.
constexpr std::size_t kPageLength = 5000;
const ObjectScan kScan{75, 8, 0, {0, 0, 1600, 800}};

class SimulatedObjectFaults : public testing::Test {
 protected:
  SimulatedObjectFaults() : device({"--family", "BpdPrinter", "--block", "1000"}), host(device) {}

  // Scans a page in the host mode, and waits for the next original.
  std::vector<std::string> scan(const std::string& until = "stateChanged Wait Next Original") {
    job = host.createJob(kScan);
    host.data.clear();
    host.startJob(job);
    return host.receiveUntil(until);
  }
  void endJob() {
    host.call(job + ".scanJob", "done");
    host.receiveUntil("<Job.End>");
  }
  void expectWholePage() {
    EXPECT_THAT(scan(), ElementsAre("stateChanged Warming", "stateChanged Scanning", "<Job.Start>",
                                    "<Page.Start>", "<Scan.Data>", "<Page.End>", "pageScanned Flatbed",
                                    "stateChanged Wait Next Original"));
    EXPECT_EQ(host.data.size(), kPageLength);
    endJob();
  }

  SimulatorProcess device;
  ObjectHost host;
  std::string job;
};

TEST_F(SimulatedObjectFaults, SpoilDocumentsAsOftenAsAsked) {
  host.observe("system", "systemUpdate");
  struct Case {
    const char* fault;
    std::vector<const char*> words;  // of one removeObserver and one exitHostUSBSendMode, sent together
  };
  constexpr char kDone[] = "response 0";
  constexpr char kTold[] = "systemUpdate HostSend Exited";
  const Case kCases[] = {
      {"drop-reply=removeObserver:1", {kDone, kTold}},
      {"drop-reply=exitHostUSBSendMode:1", {kDone, kTold}},
      {"drop-reply=systemUpdate:1", {kDone, kDone}},
      {"drop-reply=any:3", {}},
      {"double-reply=removeObserver:1", {kDone, kDone, kDone, kTold}},
      {"double-reply=systemUpdate:1", {kDone, kDone, kTold, kTold}},
      {"delay-reply=20:exitHostUSBSendMode:1", {kDone, kDone, kTold}},
      {"late-reply=20:systemUpdate:1", {kDone, kDone, "exception", kTold}},
      {"reject=exitHostUSBSendMode:1", {kDone, "exception"}},
      {"drop-reply=stateChanged:1", {kDone, kDone, kTold}},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.fault);
    device.order("fault " + std::string(c.fault));
    host.removeObserver("nothing", "nothing");
    host.call("system", "exitHostUSBSendMode");
    const bool waits = std::string_view(c.fault).starts_with("late");
    if (waits) host.call("nothing", "nothing");
    for (const char* words : c.words) EXPECT_EQ(host.receive(), words);
    EXPECT_THAT(host.receiveAll(), ElementsAre());
    device.command("clear-faults");
    host.call("system", "exitHostUSBSendMode");
    EXPECT_THAT(host.receiveAll(), ElementsAre(kDone, kTold)) << "no longer";
  }
  device.order("fault wrong-id=removeObserver:1");
  host.removeObserver("nothing", "nothing");
  EXPECT_THAT(host.receive(), testing::MatchesRegex("response to 1073[0-9]* 0"));
}

TEST_F(SimulatedObjectFaults, MakeDocumentsUnreadable) {
  host.observe("system", "systemUpdate");
  device.order("fault corrupt-reply=any:2");
  host.call("system", "exitHostUSBSendMode");
  EXPECT_EQ(host.receive(), "response 0");
  EXPECT_THAT(host.text(), HasSubstr("<unclosed></response>"));
  EXPECT_EQ(host.receive(), "systemUpdate HostSend Exited");
  EXPECT_THAT(host.text(), HasSubstr("<unclosed></method>"));
  device.order("fault oversize-reply=any:2");
  host.call("system", "exitHostUSBSendMode");
  for (const char* words : {"response 0", "systemUpdate HostSend Exited"}) {
    EXPECT_EQ(host.receive(), words);
    EXPECT_EQ(host.payload().size(), 10001u);
  }
}

TEST_F(SimulatedObjectFaults, StayInTheHostMode) {
  host.enterHostMode();
  device.order("fault host-mode-stay:1");
  host.call("system", "exitHostUSBSendMode");
  EXPECT_THAT(host.receiveAll(), ElementsAre("response 0"));
  ObjectHost other(device);
  other.call("system", "enterHostUSBSendMode", scanParameters({}));
  EXPECT_EQ(other.receive(), "response -1") << "never left";
  host.call("system", "exitHostUSBSendMode");
  EXPECT_THAT(host.receiveAll(), ElementsAre("response 0", "systemUpdate HostSend Exited"));
}

TEST_F(SimulatedObjectFaults, TellOfReadsThatFailed) {
  host.enterHostMode();
  struct Case {
    const char* fault;
    std::size_t before;  // bytes of the page
    std::size_t all;
  };
  for (const Case& c : {Case{"read-error=0:1", 0, kPageLength}, Case{"read-error=2:1", 2000, kPageLength},
                        Case{"read-error=5:1", kPageLength, kPageLength},
                        Case{"read-error=99:1", kPageLength, kPageLength}, Case{"no-data:1", 0, 0}}) {
    SCOPED_TRACE(c.fault);
    device.order("fault " + std::string(c.fault));
    scan("read error 1117");
    EXPECT_EQ(host.data.size(), c.before);
    const std::vector<std::string> rest = host.receiveUntil("stateChanged Wait Next Original");
    EXPECT_EQ(host.data.size(), c.all);
    EXPECT_THAT(std::vector<std::string>(rest.end() - 3, rest.end()),
                ElementsAre("<Page.End>", "pageScanned Flatbed", "stateChanged Wait Next Original"));
    endJob();
    expectWholePage();
  }
}

TEST_F(SimulatedObjectFaults, IgnoreACancelledJob) {
  host.enterHostMode();
  device.order("fault slow-scan=0");
  scan("<Page.Start>");
  EXPECT_THAT(host.receiveAll(), ElementsAre());
  device.order("fault ignore-abort:1");
  host.call(job, "cancel");
  EXPECT_THAT(host.receiveAll(), ElementsAre());
  device.order("fault slow-scan=50000");
  host.receiveUntil("stateChanged Wait Next Original");
  EXPECT_EQ(host.data.size(), kPageLength);
  endJob();
  device.command("clear-faults");
  expectWholePage();
}

TEST_F(SimulatedObjectFaults, PromiseMoreThanABlockHas) {
  host.enterHostMode();
  device.order("fault wrong-length=2:1");
  scan("<Scan.Data>");
  EXPECT_EQ(host.receive(), "<Scan.Data>");
  EXPECT_EQ(host.dataLengths.back(), 1000u);
  EXPECT_EQ(toHex(host.stream().receive(8)), "42 4B 01 00 00 00 04 F3") << "256 bytes more than 1011";
}

TEST_F(SimulatedObjectFaults, HaveThePageWaitBehindWhatIsDelayed) {
  host.enterHostMode();
  device.order("fault delay-reply=20:stateChanged:1");
  expectWholePage();
  device.order("fault delay-reply=60000:stateChanged:1");
  job = host.createJob(kScan);
  host.startJob(job);
  EXPECT_TRUE(host.stream().isSilent());
  ObjectHost other(device);
  other.call("system", "enterHostUSBSendMode", scanParameters({}));
  EXPECT_EQ(other.receive(), "response -1") << "and it is served meanwhile";
}

}  // namespace
}  // namespace qvn::test
