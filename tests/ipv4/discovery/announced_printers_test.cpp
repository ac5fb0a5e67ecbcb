// Printers that announce themselves by DNS-SD, on a network of the test's own.
#include <gtest/gtest.h>

#include <chrono>
#include <optional>

#include "ipv4/discovery/discovery_log.h"
#include "ipv4/discovery/mdns.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "support/private_network.h"
#include "support/simulator/simulator_process.h"
#include "support/transport/transport_module.h"

namespace qvn::test {
namespace {

class AnnouncedPrinters : public testing::Test {
 protected:
  void SetUp() override {
    if (const std::string reason = enterPrivateNetwork(); !reason.empty()) {
      GTEST_SKIP() << "this machine allows no network of the test's own: " << reason;
    }
    daemon.emplace();
    installSettings();
    // A discovery ends when the daemon has told all it knows, after about a second.
    setSetting("9200UnicastDiscoveryTimeout", 10000);
    module.emplace();
    log.attachTo(module->discoverer);
  }
  void TearDown() override {
    if (module) log.detachFrom(module->discoverer);
  }

  std::vector<std::string> discover(const std::string& options) {
    log.texts.clear();
    EXPECT_EQ(module->discoverer.discover(options), 0u);
    return log.texts;
  }

  std::optional<MdnsDaemon> daemon;
  std::optional<TransportModule> module;
  DiscoveryLog log;
};

TEST_F(AnnouncedPrinters, AreFoundAndFoundAgain) {
  const SimulatorProcess answering({"--serial", "BOTH"});
  const std::string place = answering.place();
  std::optional<Announcement> hall(
      std::in_place, "Hall", 9100,
      std::vector<std::string>{"txtvers=1", "ty=Laser 5", "USB_SER=A-1", "ty=later"});
  const Announcement both("Desk", answering.printPort(), {"usb_SER=BOTH"});
  const Announcement hostile("<Handle>1</Handle>", 9100, {"usb_SER=</SerialNumber>", "ty=\n", "novalue"});

  // A device that answers says more about itself than it announces, now and later.
  EXPECT_EQ(discover(place + ",dns-sd").size(), 2u);
  EXPECT_EQ(stringOf(log.texts[0], attribute::kDevice), "CpdPrinter");
  const std::string told = discover("dns-sd").at(0);
  EXPECT_EQ(
      told,
      "<Address>127.0.0.1</Address><ChannelId>0</ChannelId><Device>BpdPrinter</Device><Handle>40002</Handle>"
      "<IpPort>9100</IpPort><Nickname>Hall</Nickname><PortType>TCP</PortType><Portname>IP_A-1</Portname>"
      "<Printer Model>Laser 5</Printer Model><SerialNumber>A-1</SerialNumber><Transport>IPv4</Transport>"
      "<TransportType>NETWORK_TRANSPORT</TransportType>");
  EXPECT_EQ(log.texts.size(), 1u);
  EXPECT_EQ(discover(""), std::vector<std::string>{told}) << "by default";
  EXPECT_EQ(discover(place).size(), 1u) << "only where it is told to look";

  // By its name, whatever the text says about its place.
  hall.reset();
  const Listener printPort;
  hall.emplace("Hall", printPort.port(), std::vector<std::string>{"usb_SER=A-1"});
  log.texts.clear();
  EXPECT_EQ(module->discoverer.discoverSpecific(told), 0u);
  ASSERT_EQ(log.texts.size(), 1u);
  const std::string moved = log.texts[0];
  EXPECT_EQ(longOf(moved, attribute::kIpPort), printPort.port());
  EXPECT_EQ(longOf(moved, attribute::kHandle), 40002u);
  EXPECT_FALSE(printPort.isWaiting()) << "nobody had to try the port";

  // Without its service it is tried.
  hall.reset();
  daemon.reset();
  log.texts.clear();
  EXPECT_EQ(module->discoverer.discoverSpecific(moved), 0u);
  EXPECT_EQ(log.texts, std::vector<std::string>{moved});
  EXPECT_EQ(discover("dns-sd"), std::vector<std::string>{});
}

TEST_F(AnnouncedPrinters, AreNotWaitedForLongerThanIsSet) {
  const SimulatorProcess answering;
  setSetting("9200UnicastDiscoveryTimeout", 200);
  daemon->fallAsleep();
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(discover(answering.place() + ",dns-sd").size(), 1u);
  EXPECT_EQ(discover("dns-sd").size(), 0u);
  // A call over the bus waits 25 s for its reply.
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
  daemon->wake();
}

}  // namespace
}  // namespace qvn::test
