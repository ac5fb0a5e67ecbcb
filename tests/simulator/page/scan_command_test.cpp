// What the simulated scanner answers to each ESC command, and to what is none.
#include <gtest/gtest.h>

#include <random>

#include "support/simulator/scan_host.h"

namespace qvn::test {
namespace {

constexpr char kVersion[] = "1B 53 56 00 00 00 00 00";
constexpr char kFeederStatus[] = "1B 53 46 00 00 00 00 00";
constexpr char kLock[] = "1B 44 53 4C 00 00 00 00";
constexpr char kUnlock[] = "1B 44 53 55 00 00 00 00";
constexpr char kCopyLock[] = "1B 44 43 4C 00 00 00 00";
constexpr char kCopyUnlock[] = "1B 44 43 55 00 00 00 00";
constexpr char kGetParameters[] = "1B 44 50 47 00 00 00 00";
constexpr char kBadParameter[] = "1B 53 53 02 00 00 00 00";

// A command with text behind it, the text's length at 6.
std::string setParameters(std::string_view text) {
  return toHex(bytesOf("\x1B"
                       "DPS") +
               Bytes{0, 0, static_cast<std::uint8_t>(text.size()), 0} + bytesOf(text));
}

TEST(SimulatedScanner, AnswersEachCommandByItsTable) {
  struct Case {
    std::string request;
    std::string reply;
  };
  // In an order in which each answer follows from those before it.
  const Case kCases[] = {
      {"1B 53 44 2C 01 2C 01 00", kScanGood},      // 300 dpi
      {"1B 53 44 2C 01 58 02 00", kBadParameter},  // 300 by 600 dpi
      {"1B 53 44 2D 01 2D 01 00", kBadParameter},  // 301 dpi
      {"1B 53 43 02 00 00 00 00", kScanGood},
      {"1B 53 43 03 00 00 00 00", kBadParameter},
      {"1B 53 4D D7 27 D7 36 00", kScanGood},      // the last dot of the glass
      {"1B 53 4D D8 27 00 00 00", kBadParameter},  // right of it
      {"1B 53 4D 00 00 D8 36 00", kBadParameter},  // below it
      {"1B 53 5A D8 27 D8 36 00", kScanGood},
      {"1B 53 5A D9 27 D8 36 00", kBadParameter},
      {"1B 53 5A D8 27 D9 36 00", kBadParameter},
      {"1B 53 5A 00 00 01 00 00", kBadParameter},
      {"1B 53 5A 01 00 00 00 00", kBadParameter},
      {kFeederStatus, "1B 53 53 00 02 00 00 00"},
      {"1B 53 49 01 02 03 04 05", kScanGood},
      {"1B 53 4A 01 02 03 04 05", kScanGood},
      {"1B 53 52 01 02 03 04 05", kScanGood},
      {"1B 53 58 01 02 03 04 05", kScanGood},
      {"1B 53 4F 01 02 03 04 05", kScanGood},
      {"1B 53 54 00 00 00 00 00", kScanGood},
      {kLock, kScanGood},
      {kUnlock, kScanGood},
      {kCopyLock, kScanGood},
      {kCopyUnlock, kScanGood},
      {setParameters("source=feeder\n"), kScanGood},
      {setParameters(""), kScanGood},
      {setParameters("source=roll\n"), kBadParameter},
      {setParameters("source=flatbed\nspeed=high\n"), kBadParameter},
      {"1B 43 53 53 41 34 00 00", kScanGood},
      {"1B 43 50 47 00 00 00 00", toHex(hex("1B 63 64 12 00 00 00 00") + bytesOf("copies=1\npaper=A4\n"))},
      {"1B 44 48 52 01 02 03 04", "1B 46 68 72 00 00 00 00"},
      {"1B 46 04 00 00 00 00 00", "1B 46 04 00 04 00 00 00 00 00 10 00"},
      {"1B 46 01 00 03 00 00 00 41 42 43", "1B 46 01 00 00 00 00 00"},
      {"1B 46 04 00 00 00 00 00", "1B 46 04 00 04 00 00 00 FD FF 0F 00"},
      {"1B 46 02 00 00 00 00 00", "1B 46 02 00 03 00 00 00 41 42 43"},
      {"1B 46 05 00 00 00 00 00", "1B 46 05 00 00 00 00 00"},
      {"1B 46 03 00 00 00 00 00", "1B 46 03 00 02 00 00 00 00 00"},
      {"1B 44 48 4C 01 02 03 04", "1B 44 48 4C 00 00 00 00"},
      {"1B 53 4B 00 00 00 00 00", "1B 53 4B 00 00 00 00 00"},
      // Commands that are none of those, with and without a payload; so is one with parameters it has not.
      {"1B 58 59 5A 00 00 80 00", "1B 58 59 5A 00 00 00 00"},
      {"1B 58 59 5A 02 00 80 00 1B 53", "1B 58 59 5A 00 00 00 00"},
      {"1B 53 47 01 00 00 80 00 00", "1B 53 47 01 00 00 00 00"},
      {"1B 58 59 5A 01 00 00 00 FF" + std::string(kFeederStatus), "1B 53 53 00 02 00 00 00"},
  };
  const SimulatorProcess device({"--feeder", "2"});
  ScanHost host(device);
  for (const Case& c : kCases) EXPECT_EQ(host.ask(c.request), c.reply) << "request " << c.request;
}

TEST(SimulatedScanner, DescribesItselfAndWhatWasSet) {
  SimulatorProcess device({"--model", "M 1", "--feeder", "2"});
  ScanHost host(device);
  const auto answer = [&host](const char* command) {
    host.send(command);
    return textOf(host.receive());
  };
  EXPECT_EQ(answer(kVersion),
            "model=M 1\ndpi=75,100,150,200,300,600,1200\nmodes=bw,gray,color\nwidth=10200\nheight=14040\n"
            "feeder=1\n");
  EXPECT_EQ(answer(kGetParameters),
            "source=flatbed\ndpi=300\nmode=gray\nleft=0\ntop=0\nwidth=10200\nheight=14040\nsheets=2\n");
  ScanHost(device).set(75, ScanFormat::Color);  // another connection's own
  host.set(600, ScanFormat::BlackAndWhite, {1, 2, 3, 4});
  host.setSource("feeder");
  device.order("load 300");
  EXPECT_EQ(answer(kGetParameters),
            "source=feeder\ndpi=600\nmode=bw\nleft=1\ntop=2\nwidth=3\nheight=4\nsheets=300\n");
  EXPECT_EQ(host.ask(kFeederStatus), "1B 53 53 00 FF 00 00 00") << "255 for more";
}

TEST(SimulatedScanner, LocksForOneHostUntilItUnlocksOrGoes) {
  const struct {
    const char* lock;
    const char* unlock;
  } kLocks[] = {{kLock, kUnlock}, {kCopyLock, kCopyUnlock}};
  SimulatorProcess device;
  for (const auto& [lock, unlock] : kLocks) {
    SCOPED_TRACE(lock);
    ScanHost first(device);
    ScanHost second(device);
    EXPECT_EQ(first.ask(lock), kScanGood);
    EXPECT_EQ(first.ask(lock), kScanGood);
    EXPECT_EQ(second.ask(lock), kScanBusy);
    EXPECT_EQ(second.ask(unlock), kScanGood) << "although it is not its own";
    EXPECT_EQ(second.ask(lock), kScanBusy);
    EXPECT_EQ(second.ask(kScanGo).substr(0, 11), lock == kLock ? "1B 53 53 01" : "1B 73 64 00");
    first.ask(unlock);
    if (lock == kCopyLock) second.receivePage();
    EXPECT_EQ(second.ask(lock), kScanGood);
    second.stream().close();
    std::string answer;
    for (int tries = 0; tries < 1000 && answer != kScanGood; ++tries) answer = first.ask(lock);
    EXPECT_EQ(answer, kScanGood);
    device.command("power-on-reset");
    EXPECT_EQ(ScanHost(device).ask(lock), kScanGood);
  }
  device.command("fault busy");
  ScanHost host(device);
  EXPECT_EQ(host.ask(kLock), kScanBusy);
  EXPECT_EQ(host.ask(kCopyLock), kScanBusy);
}

TEST(SimulatedScanner, FindsTheCommandBehindGarbage) {
  const SimulatorProcess device;
  for (const char* garbage : {"00 11 22 33", "53 56", "A5 00 03 50 01 00"}) {
    ScanHost host(device);
    EXPECT_EQ(host.ask(std::string(garbage) + kFeederStatus), kScanGood) << "behind " << garbage;
  }
  // A header or payload whose rest never comes swallows what follows, until the device loses its patience.
  for (const char* unfinished : {"1B 46 01 00 FF FF 00 00", "1B 53"}) {
    ScanHost host(device);
    EXPECT_EQ(host.ask(std::string(unfinished) + kFeederStatus), kScanGood) << "behind " << unfinished;
  }
}

TEST(SimulatedScanner, SurvivesGarbageOfEveryLength) {
  const SimulatorProcess device;
  std::mt19937 random(1284);
  for (std::size_t length = 0; length <= 200; ++length) {
    Bytes garbage(length);
    for (std::uint8_t& byte : garbage) byte = static_cast<std::uint8_t>(random());
    // Half of it begins as a command does: with letters of one or with any.
    if (length >= 8 && length % 2 == 0) {
      garbage[0] = 0x1B;
      if (length % 4 == 0) garbage[1] = static_cast<std::uint8_t>("SDCF"[length / 4 % 4]);
    }
    ScanHost host(device);
    host.stream().send(garbage);
    host.stream().endSending();
    EXPECT_TRUE(host.stream().isEnded()) << "length " << length;
  }
  EXPECT_EQ(ScanHost(device).ask(kFeederStatus), kScanGood);
}

TEST(SimulatedScanner, IsNotThereWhenTheDeviceOnlyPrints) {
  const std::vector<std::string> kArguments[] = {{"--printer-only"},
                                                 {"--family", "BpdPrinter", "--plain"},
                                                 {"--family", "BpdPrinter", "--printer-only"}};
  for (const auto& arguments : kArguments) {
    SCOPED_TRACE(arguments.front());
    SimulatorProcess device(arguments);
    EXPECT_EQ(device.scanPort(), 0);
    EXPECT_EQ(device.hidPort(), 0);
    for (const char* command : {"button 1", "report 00", "reports 1", "event 1", "load 1"}) {
      EXPECT_TRUE(device.command(command).contains("error")) << command;
    }
    Datagrams asker;
    asker.send(device.address(), device.discoveryPort(), "QVN-DISCOVER 1 a\n");
    const std::string answer = asker.receive();
    EXPECT_EQ(answer.find("scan="), std::string::npos) << answer;
    EXPECT_EQ(answer.find("hid="), std::string::npos) << answer;
  }
}

}  // namespace
}  // namespace qvn::test
