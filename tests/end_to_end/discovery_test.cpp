// Finding printers with the exported functions, and finding them again.
#include <gmock/gmock.h>

#include <memory>

#include "end_to_end/library_client.h"
#include "qvn/transport/attributes.h"

namespace qvn::test {
namespace {

using testing::ElementsAre;

using DiscoveredPrinters = LibraryClient;

TEST_F(DiscoveredPrinters, AreAllFoundAtOnceListedByFilterAndStayWhenTheyVanish) {
  std::vector<std::unique_ptr<SimulatorProcess>> devices;
  std::string places;
  for (const char* serial : {"A", "B", "C", "D"}) {
    const std::string address = "127.0.0." + std::to_string(devices.size() + 1);
    std::vector<std::string> arguments = {"--serial", serial, "--address", address};
    if (devices.size() >= 2) arguments.insert(arguments.end(), {"--family", "BpdPrinter"});
    if (devices.size() == 3) arguments.emplace_back("--plain");
    devices.push_back(std::make_unique<SimulatorProcess>(arguments));
    places += devices.back()->place() + ",";
  }
  discover(places);
  const std::vector<std::uint32_t> all = printers();
  ASSERT_THAT(all, ElementsAre(40001, 40002, 40003, 40004));

  const std::uint32_t b = printerWithSerial("B");
  const std::uint32_t d = printerWithSerial("D");
  EXPECT_THAT(printers("<Address>127.0.0.2</Address><PortType>tcp</PortType>"), ElementsAre(b));
  EXPECT_EQ(printers(nullptr, "NETWORK_TRANSPORT"), all);
  EXPECT_THAT(printers(nullptr, "LOCAL_TRANSPORT"), ElementsAre());
  EXPECT_EQ(stringOf(d, attribute::kDevice), "BpdPrinter");
  EXPECT_EQ(longOf(d, attribute::kChannelId), 0u);

  devices.clear();
  discover(places);
  EXPECT_EQ(printers(), all) << "what is switched off is still stored";
  EXPECT_EQ(QvnOpenPrinter(client, b), 1225u);
  EXPECT_EQ(QvnOpenPrinter(client, d), 0u) << "a plain printer is not connected to before there is a job";
  EXPECT_EQ(QvnStartJobPrinter(client, d, 0, "q", "h", "j", "u"), 1225u);
  EXPECT_EQ(QvnClosePrinter(client, d), 0u);
}

TEST_F(DiscoveredPrinters, KeepWhatWasSetWhenTheyMoveAndAreFoundAgainByTheOpenThatFails) {
  auto device = std::make_unique<SimulatorProcess>(std::vector<std::string>{"--serial", "A"});
  discover(device->place());
  const std::uint32_t handle = printerWithSerial("A");
  EXPECT_EQ(QvnSetStringPrinter(client, handle, attribute::kPortname, "LAB1", 4), 0u);
  EXPECT_EQ(QvnSetLongPrinter(client, handle, attribute::kTrueEndOfJob, 1), 0u);
  EXPECT_EQ(QvnOpenPrinter(client, handle), 0u);
  EXPECT_EQ(QvnClosePrinter(client, handle), 0u);

  device =
      std::make_unique<SimulatorProcess>(std::vector<std::string>{"--serial", "A", "--address", "127.0.0.2"});
  EXPECT_EQ(QvnOpenPrinter(client, handle), 1225u) << "nobody said where else to look";
  EXPECT_EQ(stringOf(handle, attribute::kAddress), "127.0.0.1");

  EXPECT_EQ(QvnSetDiscoveryDefaults(client, "IPv4", device->place().c_str()), 0u);
  EXPECT_EQ(QvnOpenPrinter(client, handle), 0u);
  const std::uint8_t summary[] = {0xA5, 0, 3, 0x50, 1, 0};
  std::uint8_t reply[64];
  std::uint32_t length = 0;
  EXPECT_EQ(QvnExchangeNpaPrinter(client, handle, summary, sizeof summary, reply, sizeof reply, &length), 0u);
  EXPECT_EQ(QvnClosePrinter(client, handle), 0u);
  EXPECT_THAT(printers(), ElementsAre(handle));
  EXPECT_EQ(stringOf(handle, attribute::kAddress), "127.0.0.2");
  EXPECT_EQ(longOf(handle, attribute::kUdpPort), device->discoveryPort());
  EXPECT_EQ(stringOf(handle, attribute::kPortname), "LAB1");
  EXPECT_EQ(longOf(handle, attribute::kTrueEndOfJob), 1u);
}

}  // namespace
}  // namespace qvn::test
