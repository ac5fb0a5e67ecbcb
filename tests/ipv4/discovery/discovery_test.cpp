// Finding devices, and what devices that lie can do about it.
#include <gtest/gtest.h>

#include <array>
#include <set>
#include <thread>

#include "ipv4/discovery/discovery_log.h"
#include "qvn/transport/attributes.h"
#include "qvn/transport/settings.h"
#include "support/registry_values.h"
#include "support/simulator/simulator_process.h"
#include "support/transport/transport_module.h"

namespace qvn::test {
namespace {

// The token of a question, which every answer to it must repeat.
std::string tokenOf(const std::string& question) { return question.substr(15, question.size() - 16); }

std::string answerTo(const std::string& question, const std::string& serial,
                     const std::string& family = "CpdPrinter") {
  return "QVN-DEVICE 1 " + tokenOf(question) + "\nfamily=" + family + "\nmodel=M\nserial=" + serial +
         "\nname=N\nprint=1\nbidi=2\n";
}

class Discovery : public testing::Test {
 protected:
  Discovery() {
    installSettings();
    log.attachTo(module.discoverer);
  }
  ~Discovery() override { log.detachFrom(module.discoverer); }

  std::uint32_t discover(const std::string& options) {
    log.texts.clear();
    log.parts.clear();
    return module.discoverer.discover(options);
  }
  std::uint32_t discoverSpecific(const std::string& text) {
    log.texts.clear();
    log.parts.clear();
    return module.discoverer.discoverSpecific(text);
  }

  TransportModule module;
  DiscoveryLog log;
};

TEST_F(Discovery, DescribesADeviceAndItsPartsSoThatTheyCanBeUsed) {
  const SimulatorProcess simulator({"--serial", "A-1", "--model", "Laser 5", "--name", "hall"});
  ASSERT_EQ(discover(simulator.place()), 0u);
  ASSERT_EQ(log.texts.size(), 1u);
  EXPECT_EQ(log.texts[0],
            "<Address>127.0.0.1</Address><ChannelId>" + std::to_string(simulator.bidiPort()) +
                "</ChannelId><Device>CpdPrinter</Device><Handle>40001</Handle><IpPort>" +
                std::to_string(simulator.printPort()) +
                "</IpPort><Nickname>hall</Nickname><PortType>TCP</PortType><Portname>IP_A-1</Portname>"
                "<Printer Model>Laser 5</Printer Model><SerialNumber>A-1</SerialNumber>"
                "<Transport>IPv4</Transport><TransportType>NETWORK_TRANSPORT</TransportType><UdpPort>" +
                std::to_string(simulator.discoveryPort()) + "</UdpPort>");
  EXPECT_EQ(OpenConnection(module, log.texts[0], "print").openCode(), 0u);
  EXPECT_EQ(OpenConnection(module, log.texts[0], "bidi").openCode(), 0u);
  const auto part = [&](std::uint16_t port, const char* kind, const char* handle) {
    return "<Address>127.0.0.1</Address><ChannelId>" + std::to_string(port) + "</ChannelId><Device>" + kind +
           "</Device><Handle>" + handle +
           "</Handle><Nickname>hall</Nickname><PortType>TCP</PortType><Portname>IP_A-1</Portname>"
           "<Printer Model>Laser 5</Printer Model><SerialNumber>A-1</SerialNumber><Transport>IPv4</Transport>"
           "<TransportType>NETWORK_TRANSPORT</TransportType><UdpPort>" +
           std::to_string(simulator.discoveryPort()) + "</UdpPort>";
  };
  const std::vector parts = {part(simulator.scanPort(), "CpdScanner", "40401"),
                             part(simulator.hidPort(), "CpdHid", "40801")};
  EXPECT_EQ(log.parts, parts);
  EXPECT_EQ(OpenConnection(module, parts[0], "bidi").openCode(), 0u);
  EXPECT_EQ(OpenConnection(module, parts[1], "alert").openCode(), 0u);
  // Each is found by itself, and tells of the others.
  for (const std::string& text : parts) {
    EXPECT_EQ(discoverSpecific(text), 0u);
    EXPECT_EQ(log.texts.size(), 1u);
    EXPECT_EQ(log.parts, parts);
  }
}

TEST_F(Discovery, KeepsADevicesHandleWhereverItGoes) {
  // What a process found before is in the registry.
  const std::string root = std::string(kLibraryRegistryRoot) + "Ip1\\";
  store(root + "Devices", "A", 40017u);
  store(root + "Services", "A", "announced");
  std::string first;
  {
    const SimulatorProcess a({"--serial", "A"});
    const SimulatorProcess b({"--serial", "B", "--address", "127.0.0.2"});
    ASSERT_EQ(discover(a.place() + "," + b.place()), 0u);
    ASSERT_EQ(log.texts.size(), 2u);
    if (stringOf(log.texts[0], attribute::kSerialNumber) == "B") std::swap(log.texts[0], log.texts[1]);
    first = log.texts[0];
    EXPECT_EQ(longOf(first, attribute::kHandle), 40017u);
    EXPECT_EQ(longOf(log.texts[1], attribute::kHandle), 40018u);
    EXPECT_EQ(storedText(root + "Services", "A"), "") << "it has said more than its announcement";
    ASSERT_EQ(discover(a.place()), 0u);
    EXPECT_EQ(log.texts, std::vector<std::string>{first});
  }
  const SimulatorProcess moved({"--serial", "A", "--address", "127.0.0.3"});
  ASSERT_EQ(discover(moved.place()), 0u);
  ASSERT_EQ(log.texts.size(), 1u);
  EXPECT_EQ(longOf(log.texts[0], attribute::kHandle), longOf(first, attribute::kHandle));
  EXPECT_EQ(stringOf(log.texts[0], attribute::kAddress), "127.0.0.3");

  EXPECT_EQ(module.discoverer.discoverSpecific(first), 1460u) << "nothing answers at the old place";
  EXPECT_EQ(module.discoverer.discoverSpecific(log.texts[0]), 0u);
  EXPECT_EQ(log.texts.size(), 2u);
  std::string other = log.texts[0];
  AttributeCodec::setString(other, attribute::kSerialNumber, "C");
  EXPECT_EQ(module.discoverer.discoverSpecific(other), 1168u) << "another device answers there";
  EXPECT_EQ(module.discoverer.discoverSpecific(""), 87u);
  EXPECT_EQ(log.texts.size(), 2u);
}

TEST_F(Discovery, TakesNoHarmFromDevicesThatLie) {
  // Each answers every question in a way of its own; %t stands for the question's token.
  const std::string lines = "family=CpdPrinter\nmodel=M\nserial=S%n\nname=N\nprint=1\nbidi=2\n";
  const std::string kAnswers[] = {
      "garbage",
      "QVN-DEVICE 1 0123456789abcdef\n" + lines,  // the answer to an earlier question
      "QVN-DEVICE 1 %t\n" + lines + "pad=" + std::string(9000, 'x') + "\n",
      "QVN-DEVICE 1 %t\n" + lines + "handle=40001\nHandle=40001\n",  // claims a handle: taken, but numbered
      "QVN-DEVICE 1 %t\nfamily=CpdPrinter\nmodel=M\nserial=S3\nprint=1\nbidi=2\n",  // claims to be that one
  };
  std::array<Datagrams, std::size(kAnswers)> devices;
  Datagrams unasked;
  std::string options;
  for (const Datagrams& device : devices) options += "127.0.0.1:" + std::to_string(device.port()) + ",";
  std::thread answering([&] {
    for (std::size_t i = 0; i < devices.size(); ++i) {
      const std::string token = tokenOf(devices[i].receive());
      std::string answer = kAnswers[i];
      if (const auto at = answer.find("%t"); at != std::string::npos) answer.replace(at, 2, token);
      if (const auto at = answer.find("%n"); at != std::string::npos)
        answer.replace(at, 2, std::to_string(i));
      for (int times = 0; times < 3; ++times) devices[i].answer(answer);  // over and over
    }
  });
  EXPECT_EQ(discover(options), 0u);
  answering.join();
  ASSERT_EQ(log.texts.size(), 1u);
  EXPECT_EQ(stringOf(log.texts[0], attribute::kSerialNumber), "S3");
  EXPECT_EQ(longOf(log.texts[0], attribute::kHandle), 40001u);
  EXPECT_EQ(stringOf(log.texts[0], attribute::kNickname), "N") << "the first to claim the serial number";
}

TEST_F(Discovery, AsksAllPlacesBeforeItWaitsForAny) {
  std::array<Datagrams, 50> devices;
  std::string options;
  for (const Datagrams& device : devices) options += "127.0.0.1:" + std::to_string(device.port()) + ",";
  // No device answers before every one has been asked: one question after the other would find none.
  std::thread answering([&] {
    std::vector<std::string> questions;
    for (Datagrams& device : devices) questions.push_back(device.receive());
    for (std::size_t i = 0; i < devices.size(); ++i) {
      for (int times = 0; times < 2; ++times) {
        devices[i].answer(answerTo(questions[i], "S" + std::to_string(i)));
      }
    }
  });
  setSetting("9200UnicastDiscoveryTimeout", 10000);  // it ends with the last answer
  EXPECT_EQ(discover(options), 0u);
  answering.join();
  ASSERT_EQ(log.texts.size(), devices.size());
  EXPECT_TRUE(log.parts.empty()) << "no answer names a port for any";
  std::set<std::uint32_t> handles;
  for (const std::string& text : log.texts) {
    handles.insert(longOf(text, attribute::kHandle));
  }
  EXPECT_EQ(handles.size(), devices.size());
  EXPECT_EQ(*handles.rbegin(), 40050u);
}

TEST_F(Discovery, FindsDevicesInAStormOfAnswersAndAsksAgainWhatWasLost) {
  constexpr int kStorm = 10000;
  Datagrams babbling;
  Datagrams stranger;
  Datagrams hardOfHearing;
  std::thread answering([&] {
    std::string question = babbling.receive();
    babbling.answer(answerTo(question, "BABBLING"));
    for (int i = 0; i < kStorm / 2; ++i) {
      babbling.answer(answerTo(question, "S" + std::to_string(i)));
      stranger.send("127.0.0.1", babbling.askedFrom(), answerTo(question, "X" + std::to_string(i)));
    }
    hardOfHearing.receive();  // and nothing comes of it
    hardOfHearing.answer(answerTo(hardOfHearing.receive(), "DEAF"));
  });
  setSetting("9200UnicastDiscoveryTimeout", 1000);
  EXPECT_EQ(discover("127.0.0.1:" + std::to_string(babbling.port()) +
                     ",127.0.0.1:" + std::to_string(hardOfHearing.port())),
            0u);
  answering.join();
  ASSERT_EQ(log.texts.size(), 2u);
  EXPECT_EQ(stringOf(log.texts[0], attribute::kSerialNumber), "BABBLING");
  EXPECT_EQ(stringOf(log.texts[1], attribute::kSerialNumber), "DEAF");
}

TEST_F(Discovery, TriesThePrintPortOfADeviceThatAnswersNoQuestions) {
  setSetting("NpaTimeout", 50);
  std::uint16_t unused = 0;
  { unused = Listener().port(); }
  const Listener open;
  const Listener full(0);
  const Stream filling = Stream::connect("127.0.0.1", full.port());  // the queue takes no other one
  struct Case {
    std::string attributes;
    std::uint32_t code;
  };
  const std::string nameless =
      "<Address>127.0.0.1</Address><IpPort>" + std::to_string(open.port()) + "</IpPort>";
  const Case kCases[] = {
      {attributeText(open.port(), 0), 0},
      {nameless, 0},
      {nameless + "<UdpPort>9</UdpPort>", 0},  // without a serial number an answer would prove nothing
      {attributeText(unused, 0), 1225},
      {attributeText(full.port(), 0), 1460},
      {attributeText(0, 0), 87},
      {attributeText(open.port(), 0, "nowhere"), 87},
      {"", 87},
  };
  for (const Case& c : kCases) {
    EXPECT_EQ(discoverSpecific(c.attributes), c.code) << c.attributes;
    EXPECT_EQ(log.texts, c.code == 0 ? std::vector{c.attributes} : std::vector<std::string>())
        << c.attributes;
  }
  EXPECT_EQ(discoverSpecific(nameless + "<Unverified>1</Unverified>"), 0u);
  EXPECT_EQ(log.texts, std::vector{nameless + "<Unverified>0</Unverified>"});
}

TEST_F(Discovery, DoesNotWaitForServicesWhereNobodyKnowsOfAny) {
  setSetting("9200UnicastDiscoveryTimeout", 3600000);  // the test's own limit is shorter
  EXPECT_EQ(discover("dns-sd"), 0u);
  EXPECT_EQ(discover(""), 0u);
  EXPECT_TRUE(log.texts.empty());
}

TEST_F(Discovery, RemembersWhereToLook) {
  const SimulatorProcess simulator;
  EXPECT_EQ(discover(""), 0u);
  EXPECT_TRUE(log.texts.empty()) << "nowhere, until told";
  char buffer[64] = "untouched";
  std::uint32_t required = 0;
  EXPECT_EQ(module.discoverer.getDefaults(buffer, sizeof buffer, &required), 0u);
  EXPECT_STREQ(buffer, "");
  EXPECT_EQ(required, 1u);
  EXPECT_EQ(module.discoverer.setDefaults("nowhere"), 87u);
  EXPECT_EQ(module.discoverer.setDefaults(nullptr), 87u);
  const std::string place = simulator.place();
  EXPECT_EQ(module.discoverer.setDefaults(place.c_str()), 0u);
  EXPECT_EQ(module.discoverer.getDefaults(buffer, 5, &required), 122u);
  EXPECT_EQ(required, place.size() + 1);
  EXPECT_EQ(module.discoverer.getDefaults(nullptr, 0, &required), 122u);
  EXPECT_EQ(module.discoverer.getDefaults(buffer, sizeof buffer, nullptr), 0u);
  EXPECT_EQ(buffer, place);
  EXPECT_EQ(discover(""), 0u);
  EXPECT_EQ(log.texts.size(), 1u);
  EXPECT_EQ(discover("nowhere"), 87u);
}

TEST(DiscoveryWithoutLibrary, WritesNothing) {
  TransportModule module;
  DiscoveryLog log;
  log.attachTo(module.discoverer);
  const SimulatorProcess simulator;
  EXPECT_EQ(module.discoverer.discover(simulator.place()), 2u);
  EXPECT_EQ(module.discoverer.setDefaults("127.0.0.1"), 2u);
  EXPECT_TRUE(log.texts.empty());
  log.detachFrom(module.discoverer);
}

}  // namespace
}  // namespace qvn::test
