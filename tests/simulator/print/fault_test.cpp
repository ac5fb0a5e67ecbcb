// Each fault that the simulated printer can be told to have.
#include <gtest/gtest.h>

#include "support/simulator/simulator_process.h"
#include "support/simulator/test_sockets.h"

namespace qvn::test {
namespace {

constexpr char kLock[] = "A5 00 05 50 E0 82 02 01";
constexpr char kGranted[] = "A5 00 06 20 E0 82 02 01 00";
constexpr char kUnlock[] = "A5 00 05 50 E0 82 02 02";
constexpr char kUnlocked[] = "A5 00 05 20 E0 82 02 02";
constexpr char kQueryJobs[] = "A5 00 08 50 05 02 00 00 00 00 01";
const Bytes kMarker = hex("1B 2A 82 00 00 00 00 AC");

class SimulatedFaults : public testing::Test {
 protected:
  SimulatedFaults() : device({"--events"}), bidi(Stream::connect(device.address(), device.bidiPort())) {}

  void fault(const std::string& text) { ASSERT_EQ(device.command("fault " + text).dump(), R"({"ok":true})"); }
  Stream print() { return Stream::connect(device.address(), device.printPort()); }

  SimulatorProcess device;
  Stream bidi;
};

TEST_F(SimulatedFaults, SpoilRepliesAsOftenAsAsked) {
  struct Case {
    const char* fault;
    std::vector<const char*> replies;  // to one lock and one unlock command, sent together
  };
  const Case kCases[] = {
      {"drop-reply=lock:1", {kUnlocked}},
      {"corrupt-reply=lock:1", {"A5 00 06 20 1F 7D FD FE FF", kUnlocked}},
      {"misframe-reply=lock:1", {}},
      {"double-reply=lock:1", {kGranted, kGranted, kUnlocked}},
      {"double-reply=any:2", {kGranted, kGranted, kUnlocked, kUnlocked}},
      {"reject=lock:1", {"A5 00 03 A0 E0 82", kUnlocked}},
      {"late-reply=20:lock:1", {kUnlocked, kGranted}},
      {"delay-reply=20:lock:1", {kGranted, kUnlocked}},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.fault);
    Stream host = Stream::connect(device.address(), device.bidiPort());
    fault(c.fault);
    host.send(hex(kLock) + hex(kUnlock));
    for (const char* reply : c.replies) EXPECT_EQ(toHex(host.receivePacket()), reply);
    if (c.replies.empty()) {
      EXPECT_EQ(toHex(host.receive(9)), "A5 01 06 20 E0 82 02 01 00");
      EXPECT_EQ(toHex(host.receivePacket()), kUnlocked);
    }
    EXPECT_EQ(host.ask(kLock), kGranted) << "once only";
    host.ask(kUnlock);
    device.command("clear-faults");
  }
}

TEST_F(SimulatedFaults, CloseTheBidiConnection) {
  fault("close-bidi=lock:1");
  bidi.send(hex(kLock));
  EXPECT_TRUE(bidi.isEnded());
  EXPECT_EQ(Stream::connect(device.address(), device.bidiPort()).ask(kLock), kGranted);
}

TEST_F(SimulatedFaults, AnswerBusyUntilCleared) {
  fault("busy");
  EXPECT_EQ(bidi.ask(kLock), "A5 00 06 20 E0 82 02 01 01");
  device.command("clear-faults");
  EXPECT_EQ(bidi.ask(kLock), kGranted);
}

TEST_F(SimulatedFaults, CloseInTheMiddleOfAJob) {
  fault("close-mid-job=1000:1");
  Stream host = print();
  host.send(repeated(999, 'x'));
  bidi.ask(kQueryJobs);
  EXPECT_TRUE(host.isSilent());
  host.send(repeated(1, 'x'));
  EXPECT_TRUE(host.isEnded());
  EXPECT_EQ(device.nextJob().at("outcome"), "lost");
  print().send(repeated(2000, 'x') + kMarker);
  EXPECT_EQ(device.nextJob().at("outcome"), "complete") << "once only";
}

TEST_F(SimulatedFaults, NeverFinishAJob) {
  fault("never-finish");
  print().send(bytesOf("page") + kMarker);
  EXPECT_EQ(device.nextJob().at("outcome"), "complete");
  EXPECT_EQ(bidi.ask(kQueryJobs), "A5 00 08 20 05 02 00 00 00 00 00");
  device.command("clear-faults");
  bidi.send(hex(kQueryJobs));
  EXPECT_EQ(bidi.receivePacket().size(), 26u);
}

TEST_F(SimulatedFaults, TakePrintDataSlowlyOrNotAtAll) {
  fault("slow-print=0");
  Stream host = print();
  host.send(repeated(1000, 'x') + kMarker);
  EXPECT_EQ(bidi.ask(kQueryJobs).substr(0, 5), "A5 00");
  device.command("clear-faults");
  fault("slow-print=20000");
  const nlohmann::json record = device.nextJob();
  EXPECT_EQ(record.at("bytes"), 1000);
  EXPECT_NE(record.at("started"), record.at("ended"));
}

TEST(SimulatorFaultSwitches, RefuseWhatTheyDoNotKnow) {
  SimulatorProcess device;
  for (const char* bad : {"", "dance", "drop-reply=dance", "drop-reply=lock:x", "drop-reply=lock:1:2",
                          "delay-reply", "delay-reply=soon", "busy=1", "slow-print", "slow-print=1:1",
                          "close-mid-job=-1", "late-reply=1:lock:1:1"}) {
    EXPECT_TRUE(device.command(std::string("fault ") + bad).contains("error")) << bad;
  }
}

}  // namespace
}  // namespace qvn::test
