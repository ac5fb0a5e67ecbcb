// Print queues and print monitors.
#include "platform/process/spooler.h"

#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "platform/files/paths.h"
#include "platform/threads/event.h"
#include "support/manual_clock.h"
#include "support/process/forked.h"
#include "support/registry_values.h"

namespace qvn::platform {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// What loads libcups does so in a process of its own: once loaded, it stays.
class Spooler : public testing::Test {
 protected:
  // The stand-in for libcups, which answers so.
  void cups(const char* answer) {
    setenv("QVN_TRANSPORT_PATH", FAKE_CUPS_DIRECTORY, 1);
    setenv("QVN_FAKE_CUPS", answer, 1);
  }

  std::vector<std::string> ports() {
    std::vector<PrintQueue> queues{{"before", "before", "before"}};
    error = localPrintQueues(queues);
    std::vector<std::string> found;
    for (const PrintQueue& queue : queues) {
      EXPECT_EQ(queue.shareName, queue.printerName);
      found.push_back(queue.printerName + " on " + queue.portName);
    }
    return found;
  }

  ErrorCode error = kSuccess;
};

TEST_F(Spooler, WithoutLibcupsThereAreNoQueues) {
  const std::filesystem::path directory = stateDirectory() / "no-cups";
  std::filesystem::create_directory(directory);
  chmod(directory.c_str(), 0755);
  std::ofstream(directory / "libcups.so.2") << "not a library";
  chmod((directory / "libcups.so.2").c_str(), 0644);
  setenv("QVN_TRANSPORT_PATH", directory.c_str(), 1);
  EXPECT_THAT(ports(), IsEmpty());
  EXPECT_EQ(error, kSpoolerUnavailable);
  EXPECT_EQ(lastError(), kSpoolerUnavailable);
}

TEST_F(Spooler, QueuesAreListedWithThePortThatIsInTheirDeviceUri) {
  test::inOwnProcess([this] {
    const struct {
      const char* uri;
      const char* port;
    } cases[] = {
        {"qvn://LAB1", "LAB1"},
        {"qvn:LAB1", "LAB1"},
        {"qvn://Lab%201%2f%C3%A4", "Lab 1/\xC3\xA4"},
        {"qvn:%5c%5Cserver%5Cshare", "\\\\server\\share"},
        {"qvn://100%", "100%"},
        {"qvn://%4", "%4"},
        {"qvn://%zz%41", "%zzA"},
        {"qvn://a%00b", "a%00b"},
        {"qvn://", ""},
        {"socket://192.0.2.1:9100", "socket://192.0.2.1:9100"},
        {"usb://Brand/Model%201", "usb://Brand/Model%201"},
    };
    for (const auto& [uri, port] : cases) {
      cups((std::string("Q ") + uri).c_str());
      EXPECT_THAT(ports(), ElementsAre(std::string("Q on ") + port));
      EXPECT_EQ(error, kSuccess);
    }
    cups("Second qvn://P2\nFirst qvn://P1\n");
    EXPECT_THAT(ports(), ElementsAre("Second on P2", "First on P1")) << "in the server's order";
    cups("");
    EXPECT_THAT(ports(), IsEmpty());
    EXPECT_EQ(error, kSuccess);
  });
}

TEST_F(Spooler, AServerThatDoesNotAnswerIsNoHindrance) {
  test::inOwnProcess([this] {
    const struct {
      const char* answer;
      ErrorCode error;
    } cases[] = {
        {"status 1030", kSuccess},             // not-found: it has no printers
        {"status 1025", kSpoolerUnavailable},  // forbidden
        {"status 1280", kSpoolerUnavailable},  // internal error
        {"hang", kSpoolerUnavailable},
    };
    test::ManualClock clock(test::ManualClock::Mode::AutoAdvance, std::chrono::milliseconds(20));
    for (const auto& c : cases) {
      cups(c.answer);
      EXPECT_THAT(ports(), IsEmpty()) << c.answer;
      EXPECT_EQ(error, c.error) << c.answer;
    }
    EXPECT_EQ(clock.monotonicMilliseconds(), 5000U);
    unsetenv("QVN_FAKE_CUPS");
    EXPECT_THAT(ports(), IsEmpty());
    EXPECT_EQ(error, kSpoolerUnavailable);
  });
}

TEST_F(Spooler, AMonitorIsRecordedOnceAndHasStartedEachTime) {
  ErrorCode ignored = kSuccess;
  const auto started = NamedEvent::create(kMonitorStartEvent, true, false, {.everyone = true}, ignored);
  const PrintMonitor monitor{"Model One Port", "W32X86", "qr__qzpm.dll"};
  for (const ErrorCode expected : {kSuccess, kMonitorAlreadyInstalled}) {
    started->reset();
    EXPECT_EQ(addPrintMonitor(monitor), expected);
    EXPECT_EQ(started->wait(0), WaitResult::Signalled);
  }
  const std::string key = "System\\CurrentControlSet\\Control\\Print\\Monitors\\Model One Port";
  EXPECT_EQ(test::storedText(key, "Driver"), "qr__qzpm.dll");
  EXPECT_EQ(test::storedText(key, "Environment"), "W32X86");
}

TEST_F(Spooler, AMonitorThatCannotBeRecordedHasNotStarted) {
  ErrorCode ignored = kSuccess;
  const auto started = NamedEvent::create(kMonitorStartEvent, true, false, {.everyone = true}, ignored);
  const PrintMonitor cases[] = {
      {"", "", "m.dll"}, {"Name", "", ""}, {"A\\B", "", "m.dll"}, {std::string(256, 'n'), "", "m.dll"}};
  for (const PrintMonitor& monitor : cases) {
    EXPECT_EQ(addPrintMonitor(monitor), kInvalidParameter) << monitor.name;
    EXPECT_EQ(started->wait(0), WaitResult::TimedOut) << monitor.name;
  }
}

TEST_F(Spooler, OneOfTwoProcessesRecordsTheMonitor) {
  const auto add = [] { return addPrintMonitor({"Raced Port", "", "m.dll"}) == kSuccess ? 1 : 0; };
  test::Forked first(add);
  test::Forked second(add);
  EXPECT_EQ(first.wait() + second.wait(), 1);
}

}  // namespace
}  // namespace qvn::platform
