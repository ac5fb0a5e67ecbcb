// The simulator as a process: how it starts and ends.
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>

#include "support/content_of.h"
#include "support/simulator/scan_host.h"
#include "support/simulator/simulator_process.h"
#include "support/simulator/test_sockets.h"

namespace qvn::test {
namespace {

TEST(SimulatorProcessTest, TellsWhatItIsAndWhere) {
  const SimulatorProcess device({"--model", "M", "--serial", "S"});
  const nlohmann::json& line = device.readyLine();
  EXPECT_EQ(line.at("family"), "CpdPrinter");
  EXPECT_EQ(line.at("model"), "M");
  EXPECT_EQ(line.at("serial"), "S");
  EXPECT_EQ(line.at("pid"), device.pid());
  EXPECT_EQ(line.at("address"), "127.0.0.1");
}

TEST(SimulatorProcessTest, EndsCleanly) {
  SimulatorProcess quit;
  quit.command("quit");
  EXPECT_EQ(quit.wait(), 0);
  for (const int signal : {SIGTERM, SIGINT}) {
    SimulatorProcess device;
    device.signal(signal);
    EXPECT_EQ(device.wait(), 0) << "signal " << signal;
  }
  SimulatorProcess stays({}, false);
  stays.closeInput();
  EXPECT_EQ(Stream::connect(stays.address(), stays.bidiPort()).ask("A5 00 05 50 E0 82 02 02").substr(0, 5),
            "A5 00");
  SimulatorProcess goes;
  goes.closeInput();
  EXPECT_EQ(goes.wait(), 0);
}

TEST(SimulatorProcessTest, RefusesWrongArguments) {
  const SimulatorProcess device;
  EXPECT_EQ(runSimulator({"--help"}), 0);
  EXPECT_EQ(runSimulator({"--fault", "dance"}), 2);
  EXPECT_EQ(runSimulator({"--serial", "a<b"}), 2);
  EXPECT_EQ(runSimulator({"--plain"}), 2) << "every CpdPrinter has a bidi port";
  EXPECT_NE(runSimulator({"--family", "Scanner"}), 0);
  EXPECT_NE(runSimulator({"--dance"}), 0);
  EXPECT_EQ(runSimulator({"--address", "nowhere"}), 1);
  EXPECT_EQ(runSimulator({"--bidi-port", std::to_string(device.bidiPort())}), 1) << "taken";
}

TEST(SimulatorProcessTest, RefusesFaultsThatItDoesNotKnow) {
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

TEST(SimulatorProcessTest, TracesPackets) {
  const std::filesystem::path file = std::filesystem::path(std::getenv("QVN_HOME")) / "trace";
  {
    const SimulatorProcess device({"--trace", file.string()});
    Stream::connect(device.address(), device.bidiPort()).ask("A5 00 05 50 E0 82 02 02");
    ScanHost(device).ask("1B 53 46 00 00 00 00 00");
  }
  EXPECT_EQ(contentOf(file),
            "{\"connection\":1,\"received\":\"A5000550E0820202\"}\n"
            "{\"connection\":1,\"sent\":\"A5000520E0820202\"}\n"
            "{\"port\":\"scan\",\"connection\":1,\"received\":\"1B53460000000000\"}\n"
            "{\"port\":\"scan\",\"connection\":1,\"sent\":\"1B53530000000000\"}\n");
}

}  // namespace
}  // namespace qvn::test
