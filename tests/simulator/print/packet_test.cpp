// What the simulated printer answers on its bidi and discovery ports.
#include <gtest/gtest.h>

#include <random>

#include "support/simulator/simulator_process.h"
#include "support/simulator/test_sockets.h"

namespace qvn::test {
namespace {

constexpr char kSummary[] = "A5 00 03 50 01 00";
constexpr char kCache[] = "A5 00 05 50 E0 81 00 FF";
constexpr char kLock[] = "A5 00 05 50 E0 82 02 01";
constexpr char kUnlock[] = "A5 00 05 50 E0 82 02 02";

class SimulatedPackets : public testing::Test {
 protected:
  Stream host() { return Stream::connect(device.address(), device.bidiPort()); }
  SimulatorProcess device;
};

TEST_F(SimulatedPackets, AnswersEachCommandByItsTable) {
  struct Case {
    const char* request;
    const char* reply;
  };
  // In an order in which each answer follows from those before it.
  constexpr Case kCases[] = {
      {kSummary,
       "A5 00 1C 20 01 00 02 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 04 00"},
      {kLock, "A5 00 06 20 E0 82 02 01 00"},
      {kUnlock, "A5 00 05 20 E0 82 02 02"},
      {kCache, "A5 00 15 20 E0 81 00 F0 00 00 00 00 00 00 00 00 11 01 00 00 12 02 00 00"},
      {"A5 00 0D 50 E0 84 00 01 00 0A 01 02 03 04 05 06", "A5 00 05 20 E0 84 00 01"},
      {"A5 00 06 50 03 03 C0 0F 0F", "A5 00 06 20 03 03 C0 0F 0F"},
      {"A5 00 04 50 E0 03 80", "A5 00 04 20 E0 03 80"},
      {"A5 00 05 50 E0 E1 03 01", "A5 00 05 20 E0 E1 03 01"},
      {"A5 00 06 50 E0 73 01 01 20", "A5 00 06 20 E0 73 01 01 20"},
      {"A5 00 0F 50 E0 73 07 08 00 01 00 00 00 00 00 00 01 00",
       "A5 00 0F 20 E0 73 07 08 00 01 00 00 00 00 00 00 01 00"},
      {"A5 00 06 50 05 00 00 00 00", "A5 00 06 20 05 00 00 00 01"},
      {"A5 00 0A 50 E0 02 00 01 04 61 62 63 00", "A5 00 05 20 E0 02 00 01"},
      {"A5 00 08 50 05 02 00 00 00 00 01", "A5 00 08 20 05 02 00 00 00 00 00"},
      {"A5 00 06 50 05 01 00 00 01", "A5 00 06 20 05 01 00 00 01"},
      {"A5 00 08 50 05 02 00 00 00 00 01",
       "A5 00 17 20 05 02 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"},
      // Rejected: a job that never was, a name longer than its packet, too short a command, an unknown one.
      {"A5 00 06 50 05 01 00 00 09", "A5 00 03 A0 05 01"},
      {"A5 00 07 50 E0 02 00 01 09 61", "A5 00 03 A0 E0 02"},
      {"A5 00 03 50 05 00", "A5 00 03 A0 05 00"},
      {"A5 00 02 50 77", "A5 00 02 A0 77"},
  };
  Stream bidi = host();
  for (const Case& c : kCases) EXPECT_EQ(bidi.ask(c.request), c.reply) << "request " << c.request;
}

TEST_F(SimulatedPackets, LocksForOneHostUntilItUnlocksOrGoes) {
  constexpr char kGranted[] = "A5 00 06 20 E0 82 02 01 00";
  constexpr char kRefused[] = "A5 00 06 20 E0 82 02 01 01";
  Stream first = host();
  Stream second = host();
  EXPECT_EQ(first.ask(kLock), kGranted);
  EXPECT_EQ(first.ask(kLock), kGranted);
  EXPECT_EQ(second.ask(kLock), kRefused);
  second.ask(kUnlock);  // not its own
  EXPECT_EQ(second.ask(kLock), kRefused);
  first.ask(kUnlock);
  EXPECT_EQ(second.ask(kLock), kGranted);
  second.close();
  std::string answer;
  for (int tries = 0; tries < 1000 && answer != kGranted; ++tries) answer = first.ask(kLock);
  EXPECT_EQ(answer, kGranted);
}

TEST_F(SimulatedPackets, TellsEachHostTheAlertsItAskedFor) {
  const struct {
    const char* registration;
    const char* covered;
    const char* notCovered;
  } kCases[] = {
      {"A5 00 04 50 E0 03 80", "A5 00 05 20 F0 03 80 00", "A5 00 05 20 F0 03 40 00"},
      {"A5 00 05 50 E0 E1 03 01", "A5 00 05 20 F0 E1 00 00", "A5 00 05 20 F0 03 01 00"},
      {"A5 00 06 50 E0 73 01 01 10", "A5 00 08 20 F0 73 00 01 00 00 00", "A5 00 08 20 F0 73 00 00 00 01 00"},
      {"A5 00 0F 50 E0 73 07 08 00 01 00 00 00 00 00 00 01 00", "A5 00 08 20 F0 73 00 00 00 01 00",
       "A5 00 08 20 F0 73 00 00 00 00 01"},
      {"A5 00 0F 50 E0 73 07 08 00 00 05 00 00 00 00 00 01 00", "A5 00 08 20 F0 73 00 00 00 00 04",
       "A5 00 08 20 F0 73 00 00 00 00 02"},
  };
  for (const auto& c : kCases) {
    Stream bidi = host();
    EXPECT_EQ(bidi.ask(kSummary).substr(0, 11), "A5 00 1C 20");
    device.command(std::string("alert ") + c.covered);  // not registered yet
    bidi.ask(c.registration);
    device.command(std::string("alert ") + c.notCovered);
    device.command(std::string("alert ") + c.covered);
    EXPECT_EQ(toHex(bidi.receivePacket()), c.covered) << "registered by " << c.registration;
    EXPECT_EQ(bidi.ask(kSummary).substr(0, 11), "A5 00 1C 20") << "and nothing else";
  }
}

TEST_F(SimulatedPackets, TellsStatusAndResetUnasked) {
  Stream bidi = host();
  bidi.ask(kSummary);
  device.order("status 5 42");
  EXPECT_EQ(toHex(bidi.receivePacket()),
            "A5 00 15 20 F0 73 01 01 10 01 10 00 00 00 00 00 11 01 05 00 12 02 00 2A");
  EXPECT_EQ(bidi.ask(kCache), "A5 00 15 20 E0 81 00 F0 00 00 00 00 00 00 00 00 11 01 05 00 12 02 00 2A");
  device.command("power-on-reset");
  EXPECT_EQ(toHex(bidi.receivePacket()), "A5 00 05 20 FF 01 00 00");
  device.command("send DEADBEEF");
  EXPECT_EQ(toHex(bidi.receive(4)), "DE AD BE EF");
  for (const char* bad :
       {"status 256", "status", "status 1 x", "status 1 65536", "alert 0", "send", "dance", ""}) {
    EXPECT_TRUE(device.command(bad).contains("error")) << bad;
  }
}

TEST_F(SimulatedPackets, SurvivesGarbageOfEveryLength) {
  std::mt19937 random(1284);
  for (std::size_t length = 0; length <= 300; ++length) {
    Bytes garbage(length);
    for (std::uint8_t& byte : garbage) byte = static_cast<std::uint8_t>(random());
    // Every third is pure noise, every third a packet with a wrong length, every third one with a right one.
    if (length >= 5 && length % 3 != 0) {
      garbage[0] = 0xA5;
      garbage[1] = length % 3 == 1 ? garbage[1] : static_cast<std::uint8_t>((length - 3) >> 8);
      garbage[2] = length % 3 == 1 ? garbage[2] : static_cast<std::uint8_t>((length - 3) & 0xFF);
    }
    Stream bidi = host();
    bidi.send(garbage);
    bidi.endSending();
    EXPECT_TRUE(bidi.isEnded()) << "length " << length;
  }
  EXPECT_EQ(host().ask(kSummary).substr(0, 17), "A5 00 1C 20 01 00");
}

TEST_F(SimulatedPackets, FindsThePacketBehindGarbage) {
  constexpr const char* kGarbage[] = {
      "00 11 22 33",     // no start of packet
      "A5 00 00",        // a length that no packet has
      "A5 00 01 50",     //
      "A5 FF FF 50 01",  // longer than any packet
      "A5 A5 A5",        //
      "A5 00 02 20 77",  // no request
      "A5 00 02 80 A4",  // not for a printer that speaks packets already
      "A5 00 05 50 F0 01 00 00",
  };
  for (const char* garbage : kGarbage) {
    Stream bidi = host();
    bidi.send(hex(garbage) + hex(kSummary));
    EXPECT_EQ(toHex(bidi.receivePacket()).substr(0, 17), "A5 00 1C 20 01 00") << "behind " << garbage;
  }
  // A packet whose rest never comes swallows what follows, until the device loses its patience.
  Stream bidi = host();
  bidi.send(hex("A5 01 00 50") + hex(kSummary));
  EXPECT_EQ(toHex(bidi.receivePacket()).substr(0, 17), "A5 00 1C 20 01 00");
}

TEST(SimulatedDiscovery, AnswersOnlyWellFormedQuestionsWithWhatItIs) {
  const SimulatorProcess device(
      {"--model", "M 1", "--serial", "S-1", "--name", "on the desk", "--address", "127.0.0.3"});
  EXPECT_EQ(device.readyLine().at("model"), "M 1");
  EXPECT_EQ(device.readyLine().at("serial"), "S-1");
  EXPECT_EQ(device.readyLine().at("pid"), device.pid());
  Datagrams host;
  for (const char* bad : {"", "QVN-DISCOVER 1 \n", "QVN-DISCOVER 1 abc", "QVN-DISCOVER 2 abc\n",
                          "QVN-DISCOVER 1 a b\n", "QVN-DISCOVER 1 012345678901234567890123456789012\n"}) {
    host.send("127.0.0.3", device.discoveryPort(), bad);
  }
  host.send("127.0.0.3", device.discoveryPort(), "QVN-DISCOVER 1 abc9\n");
  EXPECT_EQ(host.receive(),
            "QVN-DEVICE 1 abc9\nfamily=CpdPrinter\nmodel=M 1\nserial=S-1\nname=on the desk\nprint=" +
                std::to_string(device.printPort()) + "\nbidi=" + std::to_string(device.bidiPort()) +
                "\nscan=" + std::to_string(device.scanPort()) + "\nhid=" + std::to_string(device.hidPort()) +
                "\n");
}

}  // namespace
}  // namespace qvn::test
