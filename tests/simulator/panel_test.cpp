// The button panel of the simulated device: reports and events on its HID port, and scripts that cause them.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "support/simulator/simulator_process.h"
#include "support/simulator/test_sockets.h"

namespace qvn::test {
namespace {

Stream hidOf(const SimulatorProcess& device) { return Stream::connect(device.address(), device.hidPort()); }

// One message: type, length and content.
Bytes receiveMessage(Stream& host) {
  const Bytes header = host.receive(3);
  if (header.size() < 3) return header;
  return header + host.receive(static_cast<std::size_t>(header[1] | header[2] << 8));
}

TEST(SimulatedPanel, SendsWhatItIsTold) {
  const struct {
    const char* command;
    std::vector<const char*> messages;
  } kCases[] = {
      {"button 3", {"01 08 00 01 01 03 00 00 00 00 00", "01 08 00 01 01 00 00 00 00 00 00"}},
      {"button 0xFF", {"01 08 00 01 01 FF 00 00 00 00 00", "01 08 00 01 01 00 00 00 00 00 00"}},
      {"report DE AD BE EF 00", {"01 05 00 DE AD BE EF 00"}},
      {"reports 2", {"01 08 00 02 01 00 00 00 00 00 00", "01 08 00 02 01 01 00 00 00 00 00"}},
      {"reports 0", {}},
      {"event 5", {"02 08 00 05 00 00 00 02 00 00 00"}},
      {"event 0x01020304 7", {"02 08 00 04 03 02 01 07 00 00 00"}},
  };
  SimulatorProcess device;
  Stream first = hidOf(device);
  Stream second = hidOf(device);
  for (const auto& c : kCases) {
    device.order(c.command);
    for (Stream* host : {&first, &second}) {
      for (const char* message : c.messages) EXPECT_EQ(toHex(receiveMessage(*host)), message) << c.command;
      EXPECT_TRUE(host->isSilent()) << c.command;
    }
  }
  for (const char* bad : {"button", "button 0", "button 256", "button x", "report", "report 0", "reports",
                          "reports -1", "event", "event x", "event 1 x", "load", "load x", "wait 1"}) {
    EXPECT_TRUE(device.command(bad).contains("error")) << bad;
  }
}

TEST(SimulatedPanel, LosesNoReportOfAHundredThousand) {
  constexpr std::uint32_t kCount = 100000;
  SimulatorProcess device;
  Stream reads = hidOf(device);
  Stream doesNotRead = hidOf(device);
  device.order("reports " + std::to_string(kCount));
  device.command("button 1");
  for (Stream* host : {&reads, &doesNotRead}) {  // the second has them still to come
    for (std::uint32_t i = 0; i < kCount; ++i) {
      const Bytes message = host->receive(11);
      ASSERT_EQ(message.size(), 11u);
      ASSERT_EQ(message[5] | message[6] << 8 | message[7] << 16, static_cast<int>(i));
    }
    EXPECT_EQ(toHex(receiveMessage(*host)), "01 08 00 01 01 01 00 00 00 00 00") << "in their order";
  }
}

TEST(SimulatedPanel, EndsAHostThatNeverReadsAndServesTheOthers) {
  SimulatorProcess device;
  Stream deaf = hidOf(device);
  Stream leaves = hidOf(device);
  device.command("reports 10000000");  // more than any socket holds
  leaves.reset();
  // Each host that does not read is owed so much, and not more.
  const std::string large = "report " + std::string(60000, 'A');
  for (int i = 0; i < 200; ++i) device.order(large);
  EXPECT_TRUE(deaf.isEnded());
  Stream late = hidOf(device);
  late.send(bytesOf("nobody asked"));
  device.command("event 9");
  EXPECT_EQ(toHex(receiveMessage(late)), "02 08 00 09 00 00 00 02 00 00 00");
}

TEST(SimulatedPanel, FollowsAScript) {
  const std::filesystem::path file = std::filesystem::path(std::getenv("QVN_HOME")) / "script";
  std::ofstream(file) << "wait 100\n"
                         "button 2\n"
                         "dance\n"
                         "wait soon\n"
                         "\n"
                         "wait 1\n"
                         "event 4\n"
                         "wait 1\n"
                         "quit\n";
  SimulatorProcess device({"--script", file.string()});
  Stream host = hidOf(device);
  for (const char* message : {"01 08 00 01 01 02 00 00 00 00 00", "01 08 00 01 01 00 00 00 00 00 00",
                              "02 08 00 04 00 00 00 02 00 00 00"}) {
    EXPECT_EQ(toHex(receiveMessage(host)), message);
  }
  EXPECT_EQ(device.wait(), 0);
  EXPECT_NE(runSimulator({"--script", "/nowhere"}), 0);
}

}  // namespace
}  // namespace qvn::test
