// The queues of a real scheduler, as the platform layer lists them and as names of printers.
#include <gmock/gmock.h>

#include <cstdlib>
#include <tuple>

#include "cups/scheduler.h"
#include "platform/process/spooler.h"
#include "qvn/qvn.h"
#include "support/process/successful_run.h"

namespace qvn::test {
namespace {

TEST(CupsQueues, AreListedWithTheirPortsAndNamePrinters) {
  const std::filesystem::path home = std::getenv("QVN_HOME");
  ok({"transport", "add", "qvn_ipv4.so"});
  ok({"device", "add", "--family", "BpdPrinter", "--transport", "IPv4", "--handle", "7", "--address",
      "127.0.0.1", "--portname", "FRONT DESK"});
  const Scheduler scheduler(home / "cups", home);
  setenv("CUPS_SERVER", (home / "cups/socket").c_str(), 1);
  std::vector<platform::PrintQueue> queues;
  EXPECT_EQ(platform::localPrintQueues(queues), platform::kSuccess);
  EXPECT_TRUE(queues.empty());

  for (const auto& [queue, uri] : {std::pair("desk", "qvn://front%20desk"), std::pair("raw", "qvn:RAW1")}) {
    const Result made = scheduler.command({"lpadmin", "-p", queue, "-v", uri, "-m", "raw", "-E"});
    ASSERT_EQ(made.exitCode, 0) << made.errors;
  }
  ASSERT_EQ(platform::localPrintQueues(queues), platform::kSuccess);
  std::vector<std::tuple<std::string, std::string, std::string>> listed;
  for (const auto& queue : queues) listed.emplace_back(queue.printerName, queue.shareName, queue.portName);
  EXPECT_THAT(listed, testing::UnorderedElementsAre(std::tuple("desk", "desk", "front desk"),
                                                    std::tuple("raw", "raw", "RAW1")));

  ASSERT_EQ(QvnInitialize(), 0u);
  std::uint32_t handle = 0;
  EXPECT_EQ(QvnEnumSpecificPrinter(1, "\\\\anyhost\\DESK", &handle), 0u);
  EXPECT_EQ(handle, 7u);
  EXPECT_EQ(QvnEnumSpecificPrinter(1, "\\\\anyhost\\raw", &handle), 1796u);
  EXPECT_EQ(QvnUninitialize(), 0u);
}

}  // namespace
}  // namespace qvn::test
