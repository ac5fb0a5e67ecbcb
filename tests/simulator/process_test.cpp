// The simulator as a process: how it starts and ends.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "support/content_of.h"
#include "support/simulator/scan_host.h"
#include "support/simulator/simulator_process.h"
#include "support/simulator/test_sockets.h"

namespace qvn::test {
namespace {

using testing::HasSubstr;

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

TEST(SimulatorProcessTest, HelpsPeopleAndRefusesWrongArguments) {
  SimulatorProcess device;
  EXPECT_THAT(device.command("help").value("told", ""), HasSubstr("clear-faults"));
  for (const char* const helpful : {"help", "--help", "--version"}) EXPECT_EQ(runSimulator({helpful}), 0);
  EXPECT_EQ(runSimulator({"--fault", "dance"}), 2);
  EXPECT_EQ(runSimulator({"--serial", "a<b"}), 2);
  EXPECT_EQ(runSimulator({"--plain"}), 2) << "every CpdPrinter has a bidi port";
  EXPECT_NE(runSimulator({"--family", "Scanner"}), 0);
  EXPECT_NE(runSimulator({"--dance"}), 0);
  EXPECT_EQ(runSimulator({"--address", "nowhere"}), 1);
  const std::string taken = std::to_string(device.bidiPort());
  try {
    const SimulatorProcess second({"--bidi-port", taken});
    ADD_FAILURE() << "the port is taken";
  } catch (const std::runtime_error& error) {
    EXPECT_THAT(error.what(), HasSubstr("cannot take the TCP port " + taken + " on 127.0.0.1"));
  }
}

TEST(SimulatorProcessTest, RefusesFaultsThatItDoesNotKnow) {
  SimulatorProcess device;
  const char* const kBad[] = {
      "", "dance",
      // Replies: what they are to, how late they come and how often that happens.
      "drop-reply=dance", "drop-reply=lock:x", "drop-reply=lock:0", "drop-reply=lock:1:2", "drop-reply:go",
      "delay-reply", "delay-reply=soon", "late-reply=1:lock:1:1", "late-reply=1:version", "corrupt-reply=go",
      "reject=size", "reject=stateChanged", "misframe-reply=other", "misframe-reply=pageScanned",
      "wrong-id=systemUpdate", "wrong-id=summary", "wrong-id=enter", "close-bidi=systemUpdate",
      "oversize-reply=version", "drop-reply=enter-npa-mode",
      // Jobs and pages.
      "busy=1", "busy:1", "slow-print", "slow-print=1:1", "close-mid-job=-1", "status-early",
      "status-early=x", "status-early:1", "status-late=1:2:3", "status-twice=1", "status-never:x",
      "wrong-length=-1", "stop-page=99999999999999", "slow-scan", "slow-scan=1:1", "ignore-abort=1:1",
      "read-error", "read-error=x", "no-data=1", "host-mode-fail=1"};
  for (const char* const bad : kBad) {
    EXPECT_TRUE(device.command(std::string("fault ") + bad).contains("error")) << bad;
  }
}

// Somebody who asks for a fault that never shows has made a mistake.
TEST(SimulatorProcessTest, RefusesFaultsThatItCannotHave) {
  const struct {
    std::vector<std::string> device;
    std::vector<const char*> faults;
    const char* sentence;
  } rows[] = {
      {{},
       {"read-error=1", "host-mode-fail", "host-mode-stay", "wrong-id=any", "oversize-reply=any",
        "drop-reply=create", "delay-reply=5:systemUpdate"},
       "no scanner that takes documents"},
      {{"--family", "BpdPrinter"},
       {"status-early=1", "status-late=1", "status-twice", "status-never", "drop-reply=version"},
       "no scanner that takes ESC commands"},
      {{}, {"usb-stall=1", "usb-no-id"}, "no USB side"},
      {{"--usb=0"}, {"usb-short=0"}, "1 or more"},
      {{"--usb=0", "--family", "BpdPrinter", "--plain"},
       {"usb-short=1", "usb-zero", "usb-babble"},
       "no USB side that sends"},
      {{"--family", "BpdPrinter"}, {"misframe-reply=create"}, "no frame around its replies"},
      {{"--printer-only"},
       {"wrong-length=1", "stop-page=1", "slow-scan=1", "no-data", "ignore-abort"},
       "no scanner"},
      {{"--family", "BpdPrinter", "--plain"},
       {"never-finish", "drop-reply=lock", "close-bidi=summary"},
       "no bidi port"},
      {{"--family", "BpdPrinter", "--plain"},
       {"busy", "drop-reply=any", "reject=any"},
       "neither bidi port nor scanner"},
  };
  for (const auto& row : rows) {
    SimulatorProcess device(row.device);
    for (const char* const fault : row.faults) {
      EXPECT_THAT(device.command(std::string("fault ") + fault).value("error", ""), HasSubstr(row.sentence))
          << fault;
      std::vector<std::string> arguments = row.device;
      arguments.insert(arguments.end(), {"--fault", fault});
      EXPECT_EQ(runSimulator(arguments), 2) << fault;
    }
    device.order("fault slow-print=1000");
  }
  SimulatorProcess({"--fault", "misframe-reply=create", "--family", "BpdPrinter", "--framed"})
      .order("fault busy");
}

TEST(SimulatorProcessTest, TellsOnATerminalHowToFindIt) {
  const int terminals = posix_openpt(O_RDWR | O_NOCTTY);
  if (terminals < 0) GTEST_SKIP() << "this machine gives no terminal: " << std::strerror(errno);
  close(terminals);
  Child terminal({"/usr/bin/script", "-qec", QVN_SIM_PATH, "/dev/null"});
  const nlohmann::json ready = nlohmann::json::parse(terminal.readLine().value_or("null"));
  const std::string place = "127.0.0.1:" + std::to_string(ready.value("discovery", 0));
  EXPECT_EQ(terminal.readLine(), "qvn discover --transport IPv4 " + place + "\r");
  terminal.write("quit\n");
  EXPECT_EQ(terminal.wait(), 0);
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
