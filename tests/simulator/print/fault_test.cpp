// The faults that the simulated printer can be told to have, and what is none of any device.
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

  Stream print() { return Stream::connect(device.address(), device.printPort()); }

  SimulatorProcess device;
  Stream bidi;
};

TEST_F(SimulatedFaults, DoubleRepliesAsOftenAsAsked) {
  device.order("fault double-reply=any:2");
  bidi.send(hex(kLock) + hex(kUnlock));
  for (const char* reply : {kGranted, kGranted, kUnlocked, kUnlocked}) {
    EXPECT_EQ(toHex(bidi.receivePacket()), reply);
  }
  EXPECT_EQ(bidi.ask(kLock), kGranted);
  EXPECT_EQ(bidi.ask(kUnlock), kUnlocked) << "not a third time";
}

TEST_F(SimulatedFaults, NeverFinishAJob) {
  device.order("fault never-finish");
  print().send(bytesOf("page") + kMarker);
  EXPECT_EQ(device.nextJob().at("outcome"), "complete");
  EXPECT_EQ(bidi.ask(kQueryJobs), "A5 00 08 20 05 02 00 00 00 00 00");
  device.command("clear-faults");
  bidi.send(hex(kQueryJobs));
  EXPECT_EQ(bidi.receivePacket().size(), 26u);
}

TEST(SimulatorFaultSwitches, RefuseWhatTheyDoNotKnow) {
  SimulatorProcess device;
  const char* const kBad[] = {
      "", "dance",
      // Replies: what they are to, how late they come and how often that happens.
      "drop-reply=dance", "drop-reply=lock:x", "drop-reply=lock:1:2", "drop-reply:go", "delay-reply",
      "delay-reply=soon", "late-reply=1:lock:1:1", "late-reply=1:version", "corrupt-reply=go", "reject=size",
      "reject=stateChanged", "misframe-reply=other", "misframe-reply=pageScanned", "wrong-id=systemUpdate",
      "wrong-id=summary", "wrong-id=enter", "close-bidi=systemUpdate", "oversize-reply=version",
      // Jobs and pages.
      "busy=1", "busy:1", "slow-print", "slow-print=1:1", "close-mid-job=-1", "status-early",
      "status-early=x", "status-early:1", "status-late=1:2:3", "status-twice=1", "status-never:x",
      "wrong-length=-1", "stop-page=99999999999999", "slow-scan", "slow-scan=1:1", "ignore-abort=1:1",
      "read-error", "read-error=x", "no-data=1", "host-mode-fail=1"};
  for (const char* const bad : kBad) {
    EXPECT_TRUE(device.command(std::string("fault ") + bad).contains("error")) << bad;
  }
}

}  // namespace
}  // namespace qvn::test
