// Print jobs on Bpd printers, from the exported functions to the device's store.
#include <gmock/gmock.h>

#include "end_to_end/library_client.h"
#include "support/noise.h"
#include "support/process/successful_run.h"

namespace qvn::test {
namespace {

constexpr char kAccountLine[] = "\x1B%-12345X@PJL\r\n@PJL LJOBINFO ACCOUNTNUMBER = \"ACC-17\"\r\n";
constexpr std::uint32_t kAllStatusAlerts = 0x3FF;

class BpdPrinting : public LibraryClient {
 protected:
  // Starts a printer and lets the library find and open it.
  std::uint32_t start(std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"--family", "BpdPrinter", "--events", "--jobs",
                                       (home() / "jobs").string(), "--trace", (home() / "trace").string()});
    device = std::make_unique<SimulatorProcess>(arguments);
    discover(device->place());
    const std::uint32_t handle = printerWithSerial("SIM0000001");
    EXPECT_EQ(QvnOpenPrinter(client, handle), 0u);
    return handle;
  }
  void TearDown() override { std::filesystem::remove_all(home() / "jobs"); }

  std::string stored(int job) const {
    return contentOf(home() / "jobs" / ("job-" + std::to_string(job) + ".prn"));
  }
  std::string packets() const { return contentOf(home() / "trace"); }

  std::unique_ptr<SimulatorProcess> device;
};

TEST_F(BpdPrinting, NamesTheJobToAPrinterWhoseAlertsAreWanted) {
  const std::uint32_t handle = start({});
  ASSERT_EQ(
      QvnRegisterForAlertsPrinter(client, handle, kAllStatusAlerts,
                                  [](std::uint32_t, const std::uint8_t*, std::uint32_t, std::uint32_t) {}),
      0u);
  const std::string data = kAccountLine + noise(1500000);
  printJob(handle, "accounts", data);
  const nlohmann::json record = device->nextJob();
  EXPECT_EQ(record.at("outcome"), "complete");
  EXPECT_EQ(record.at("name"), "HT:host;UR:anna;SC:TCP 9400;JN:accounts;QU:queue;AN:ACC-17;");
  EXPECT_TRUE(stored(1) == data);
  EXPECT_THAT(packets(), testing::HasSubstr("A5001080A45BA45B10EFA45B11EE00FF13EC2E"));

  printJob(handle, "no account", "x");
  EXPECT_EQ(device->nextJob().at("name"), "HT:host;UR:anna;SC:TCP 9400;JN:no account;QU:queue;AN:;");
  EXPECT_EQ(QvnUnregisterForAlertsPrinter(client, handle), 0u);
  EXPECT_EQ(QvnClosePrinter(client, handle), 0u);
}

TEST_F(BpdPrinting, GoesOnWhenThePrinterTakesNothingForAWhile) {
  ok({"settings", "set", "PJLWriteTimeout", "100"});
  const std::uint32_t handle = start({"--plain", "--fault", "slow-print=0"});
  const std::string data = noise(8000000);
  ASSERT_EQ(QvnStartJobPrinter(client, handle, 7, "queue", "host", "slow", "anna"), 0u);
  std::size_t at = 0;
  const auto write = [&](std::uint32_t& taken) {
    const std::uint32_t rc =
        QvnWritePrinter(client, handle, reinterpret_cast<const std::uint8_t*>(data.data()) + at,
                        static_cast<std::uint32_t>(data.size() - at), &taken);
    at += taken;
    return rc;
  };
  std::uint32_t taken = 0;
  EXPECT_EQ(write(taken), 1460u);
  EXPECT_EQ(write(taken), 1460u) << "and the next try tells the same";
  device->command("clear-faults");
  std::uint32_t rc = 0;
  while (at < data.size() && (rc = write(taken)) == 0 && taken > 0) {
  }
  EXPECT_EQ(rc, 0u);
  EXPECT_EQ(QvnEndJobPrinter(client, handle), 0u);
  EXPECT_EQ(device->nextJob().at("outcome"), "complete");
  EXPECT_TRUE(stored(1) == data);
  EXPECT_EQ(QvnClosePrinter(client, handle), 0u);
}

}  // namespace
}  // namespace qvn::test
