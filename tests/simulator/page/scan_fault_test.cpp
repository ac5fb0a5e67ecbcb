// Each fault that the simulated scanner can be told to have.
#include <gtest/gtest.h>

#include "support/simulator/scan_host.h"

namespace qvn::test {
namespace {

constexpr char kFeederStatus[] = "1B 53 46 00 00 00 00 00";
constexpr char kScanStatus[] = "1B 53 4B 00 00 00 00 00";
constexpr char kSending[] = "1B 53 4B 00 01 00 00 00";

// 100 dots, 50 lines of gray in blocks of 1000 bytes.
constexpr std::size_t kPageLength = 5000;

class SimulatedScanFaults : public testing::Test {
 protected:
  SimulatedScanFaults() : device({"--block", "1000", "--feeder", "7"}), host(device) {
    host.set(75, ScanFormat::Gray, kArea);
  }

  void expectWholePage(ScanHost& on) {
    const ScannedPage page = on.scan();
    EXPECT_EQ(page.data.size(), kPageLength);
    EXPECT_EQ(page.status, kPageStatus);
  }

  static constexpr ScanArea kArea{0, 0, 1600, 800};
  static constexpr char kPageStatus[] = "1B 53 53 00 07 00 00 00";
  SimulatorProcess device;
  ScanHost host;
};

TEST_F(SimulatedScanFaults, SpoilRepliesAsOftenAsAsked) {
  struct Case {
    const char* fault;
    std::vector<const char*> replies;  // to one feeder-status and one scan-status, sent together
  };
  constexpr char kIdle[] = "1B 53 4B 00 00 00 00 00";
  const Case kCases[] = {
      {"drop-reply=feeder-status:1", {kIdle}},
      {"double-reply=feeder-status:1", {kPageStatus, kPageStatus, kIdle}},
      {"double-reply=any:2", {kPageStatus, kPageStatus, kIdle, kIdle}},
      {"delay-reply=20:feeder-status:1", {kPageStatus, kIdle}},
      {"drop-reply=summary:1", {kPageStatus, kIdle}},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.fault);
    device.order("fault " + std::string(c.fault));
    host.send(std::string(kFeederStatus) + kScanStatus);
    for (const char* reply : c.replies) EXPECT_EQ(toHex(host.receive()), reply);
    EXPECT_EQ(host.ask(kFeederStatus), kPageStatus) << "once only";
    device.command("clear-faults");
  }
  device.order("fault close-bidi=feeder-status:1");
  host.send(kFeederStatus);
  EXPECT_TRUE(host.stream().isEnded());
  EXPECT_EQ(ScanHost(device).ask(kFeederStatus), kPageStatus);
}

TEST_F(SimulatedScanFaults, DelayOrDropAPageAsAReplyToGo) {
  device.order("fault delay-reply=20:go:1");
  host.send(std::string(kScanGo) + kScanStatus);
  EXPECT_EQ(host.receivePage().data.size(), kPageLength);
  EXPECT_EQ(toHex(host.receive()), kSending) << "waited behind the page";
  device.order("fault delay-reply=60000:go:1");
  host.send(std::string(kScanGo) + kScanAbort);
  EXPECT_TRUE(host.stream().isSilent());
  ScanHost other(device);
  other.set(75, ScanFormat::Gray, kArea);
  expectWholePage(other);
  device.order("fault drop-reply=go:1");
  other.send(kScanGo);
  expectWholePage(other);
}

TEST_F(SimulatedScanFaults, TellTheStatusLateOrTwice) {
  device.order("fault status-late=20:1");
  expectWholePage(host);
  device.order("fault status-late=60000:1");
  host.send(kScanGo);
  for (std::size_t got = 0; got < kPageLength;) got += host.receive().size() - 8;
  EXPECT_EQ(host.ask(kScanStatus), kSending) << "as long as the status is missing";
  EXPECT_EQ(host.ask(kScanAbort), kScanAborted);
  device.order("fault status-twice:1");
  expectWholePage(host);
  EXPECT_EQ(toHex(host.receive()), kPageStatus);
  expectWholePage(host);
}

TEST_F(SimulatedScanFaults, PromiseMoreThanABlockHas) {
  device.order("fault wrong-length=2:1");
  host.send(kScanGo);
  EXPECT_EQ(host.receive().size(), 1008u);
  EXPECT_EQ(host.receive().size(), 1008u);
  const Bytes spoiled = host.stream().receive(8 + 1000 + 8);
  EXPECT_EQ(toHex(spoiled).substr(0, 23), "1B 73 64 E8 04 01 02 00");
  EXPECT_EQ(toHex(Bytes(spoiled.end() - 8, spoiled.end())), "1B 73 64 E8 03 01 03 00");
  host.stream().receive(1000);
  EXPECT_EQ(host.receive().size(), 1008u);
  EXPECT_EQ(toHex(host.receive()), kPageStatus);
  expectWholePage(host);
}

TEST_F(SimulatedScanFaults, IgnoreAnAbort) {
  device.order("fault slow-scan=0");
  device.order("fault ignore-abort:1");
  host.send(kScanGo);
  host.send(kScanAbort);
  EXPECT_EQ(host.ask(kScanStatus), kSending);
  EXPECT_EQ(host.ask(kScanAbort), kScanAborted) << "once only";
}

}  // namespace
}  // namespace qvn::test
