// The simulated device on USB, as a host sees it that imports it by USB/IP.
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <random>

#include "support/content_of.h"
#include "usbip_host.h"

namespace qvn::test {
namespace {

using testing::AllOf;
using testing::Ge;
using testing::HasSubstr;
using testing::Lt;

constexpr std::size_t kPacket = 512;
constexpr char kSummary[] = "A5 00 03 50 01 00";
const Bytes kMarker = hex("1B 2A 82 00 00 00 00 AC");

class SimulatedUsb : public testing::Test {
 protected:
  SimulatedUsb() : jobs(std::filesystem::path(std::getenv("QVN_HOME")) / "jobs") {}
  void TearDown() override { std::filesystem::remove_all(jobs); }

  SimulatorProcess start(std::vector<std::string> more = {}) const {
    more.insert(more.end(), {"--usb=0", "--events", "--jobs", jobs.string()});
    return SimulatorProcess(more);
  }
  Bytes stored(int id) const { return bytesOf(contentOf(jobs / ("job-" + std::to_string(id) + ".prn"))); }

  const std::filesystem::path jobs;
};

TEST_F(SimulatedUsb, AnswersControlRequests) {
  const struct {
    std::vector<std::string> device;
    std::vector<std::pair<const char*, std::string>> answers;
  } rows[] = {
      {{"--model", "M\xC3\xBC", "--serial", "S1"},
       {{"80 06 00 01 00 00 40 00", "12 01 00 02 00 00 00 40 09 12 01 00 00 01 01 02 03 01"},
        {"80 06 00 02 00 00 09 00", "09 02 60 00 03 01 00 C0 01"},
        {"80 06 00 02 00 00 FF 00",
         "09 02 60 00 03 01 00 C0 01 09 04 00 00 01 07 01 01 00 07 05 01 02 00 02 00 "
         "09 04 00 01 02 07 01 02 00 07 05 01 02 00 02 00 07 05 81 02 00 02 00 "
         "09 04 01 00 02 FF 01 01 00 07 05 02 02 00 02 00 07 05 82 02 00 02 00 "
         "09 04 02 00 01 03 00 00 00 09 21 11 01 00 01 22 1F 00 07 05 83 03 40 00 04"},
        {"80 06 00 03 00 00 FF 00", "04 03 09 04"},
        {"80 06 01 03 09 04 FF 00", "08 03 51 00 76 00 6E 00"},
        {"80 06 02 03 09 04 FF 00", "06 03 4D 00 FC 00"},
        {"80 06 03 03 09 04 FF 00", "06 03 53 00 31 00"},
        {"80 06 04 03 09 04 FF 00", "stall"},
        {"80 06 00 06 00 00 0A 00", "stall"},
        {"81 06 00 22 02 00 07 00", "06 00 FF 09 01 A1 01"},
        {"81 06 00 22 01 00 07 00", "stall"},
        {"21 0A 00 00 02 00 00 00", ""},
        {"A1 00 00 00 00 00 FF 00",
         "00 3F " + toHex(bytesOf("MFG:Qvn;MDL:M\xC3\xBC;CMD:NPA,PJL;CLS:PRINTER;SN:S1;FAM:CpdPrinter;"))},
        {"A1 00 00 00 00 01 FF 00", "stall"},
        {"A1 01 00 00 00 00 01 00", "18"},
        {"80 00 00 00 00 00 02 00", "01 00"},
        {"81 0A 00 00 00 00 01 00", "00"},
        {"01 0B 01 00 00 00 00 00", ""},
        {"81 0A 00 00 00 00 01 00", "01"},
        {"01 0B 02 00 00 00 00 00", "stall"},
        {"01 0B 00 00 03 00 00 00", "stall"},
        {"02 03 00 00 81 00 00 00", ""},
        {"82 00 00 00 81 00 02 00", "01 00"},
        {"02 01 00 00 81 00 00 00", ""},
        {"82 00 00 00 81 00 02 00", "00 00"},
        {"82 00 00 00 85 00 02 00", "stall"},
        {"00 09 00 00 00 00 00 00", ""},
        {"80 08 00 00 00 00 01 00", "00"},
        {"01 0B 00 00 00 00 00 00", "stall"},
        {"00 09 01 00 00 00 00 00", ""},
        {"81 0A 00 00 00 00 01 00", "00"},
        {"00 09 02 00 00 00 00 00", "stall"},
        {"C0 77 00 00 00 00 01 00", "stall"}}},
      {{"--family", "BpdPrinter", "--plain", "--serial", "S1"},
       {{"80 06 00 02 00 00 FF 00",
         "09 02 19 00 01 01 00 C0 01 09 04 00 00 01 07 01 01 00 07 05 01 02 00 02 00"},
        {"01 0B 01 00 00 00 00 00", "stall"},
        {"81 06 00 22 02 00 07 00", "stall"},
        {"A1 00 00 00 00 00 1A 00", "00 49 " + toHex(bytesOf("MFG:Qvn;MDL:Simulated Pr"))}}},
      {{"--fault", "usb-no-id:1", "--fault", "usb-empty-id:1", "--fault", "usb-little-id:1"},
       {{"A1 00 00 00 00 00 03 00", "stall"},
        {"A1 00 00 00 00 00 03 00", "00 02"},
        {"A1 00 00 00 00 00 03 00", "55 00 4D"},
        {"A1 00 00 00 00 00 03 00", "00 55 4D"}}},
  };
  for (const auto& row : rows) {
    SimulatorProcess device = start(row.device);
    UsbipHost host(device);
    for (const auto& [setup, answer] : row.answers) EXPECT_EQ(host.ask(setup), answer) << setup;
  }
}

TEST_F(SimulatedUsb, TellsThePortStatusFromThePrinters) {
  SimulatorProcess device = start();
  UsbipHost host(device);
  for (const auto& [status, lines] :
       {std::pair("0x4000", "30"), {"0x0800", "10"}, {"0x0200", "08"}, {"0", "18"}}) {
    device.order(std::string("status 0 ") + status);
    EXPECT_EQ(host.ask("A1 01 00 00 00 00 01 00"), lines) << status;
  }
}

// Print data and packets share an endpoint: what is between two short packets tells them apart.
TEST_F(SimulatedUsb, TellsPacketsFromPrintData) {
  const Bytes summary = hex(kSummary);
  const Bytes full = hex("A5 01 FD 50 01 00") + repeated(kPacket - 6, 0);  // exactly a USB packet
  const struct {
    const char* what;
    std::vector<Bytes> transfers;
    Bytes printed;
    int replies;
  } rows[] = {
      {"a packet", {summary}, {}, 1},
      {"a packet in a unit of two transfers", {full, {}}, {}, 1},
      {"longer than the packet", {full, bytesOf("x")}, full + bytesOf("x"), 0},
      {"two packets in a unit", {summary + summary}, summary + summary, 0},
      {"a packet behind print data of the unit",
       {repeated(kPacket, 'p'), summary},
       repeated(kPacket, 'p') + summary,
       0},
      {"a packet behind the end of the unit",
       {repeated(kPacket, 'p'), {}, summary},
       repeated(kPacket, 'p'),
       1},
      {"shorter than the packet", {hex("A5 00 09 50")}, hex("A5 00 09 50"), 0},
      {"a lone A5", {hex("A5"), bytesOf("data")}, hex("A5") + bytesOf("data"), 0},
      {"without a length", {hex("A5 00")}, hex("A5 00"), 0},
      {"nothing at all", {{}, {}}, {}, 0},
  };
  SimulatorProcess device = start();
  UsbipHost host(device);
  host.selectPackets();
  int job = 0;
  for (const auto& row : rows) {
    for (const Bytes& transfer : row.transfers) {
      EXPECT_EQ(host.out(0x01, transfer).length, transfer.size()) << row.what;
    }
    for (int reply = 0; reply < row.replies; ++reply) EXPECT_EQ(host.in(0x81, 1024).length, 31u) << row.what;
    const std::uint32_t more = host.beginIn(0x81, 1024);
    host.out(0x01, bytesOf("-") + kMarker);
    device.nextJob();
    EXPECT_EQ(stored(++job), row.printed + bytesOf("-")) << row.what;
    EXPECT_EQ(host.unlink(more).first, kCancelled) << row.what << ": a reply too much";
  }
  host.out(0x01, full);
  host.control("21 02 00 00 00 00 00 00");
  host.out(0x01, summary);
  EXPECT_EQ(host.in(0x81, 1024).length, 31u) << "a reset forgets the unit that has begun";
  host.control("01 0B 00 00 00 00 00 00");  // takes no packets then
  host.out(0x01, summary);
  host.out(0x01, kMarker);
  device.nextJob();
  EXPECT_EQ(stored(++job), summary);
  EXPECT_EQ(host.in(0x81, 64).status, kStalled) << "there is no such endpoint";
}

TEST_F(SimulatedUsb, EndsTransfersAsPacketsDo) {
  SimulatorProcess device = start();
  UsbipHost host(device);
  host.selectPackets();
  const auto told = [&](std::size_t length) { device.order("send " + toHex(repeated(length, 7))); };
  const std::uint32_t waiting = host.beginIn(0x81, 4096);
  told(1024);
  EXPECT_EQ(host.end(waiting).length, 1024u);
  told(1024);
  EXPECT_EQ(host.in(0x81, 1024).length, 1024u);
  EXPECT_EQ(host.in(0x81, 1024).length, 0u) << "a message of full packets is ended by an empty one";
  told(700);
  EXPECT_EQ(host.in(0x81, 512).length, 512u);
  EXPECT_EQ(host.in(0x81, 512).length, 188u);
  told(10);
  told(20);
  EXPECT_EQ(host.in(0x81, 512).length, 10u) << "each message by itself";
  EXPECT_EQ(host.in(0x81, 512, 0x01).status, -121) << "a host that allows no less";
  told(600);
  const UsbResult overflow = host.in(0x81, 100);
  EXPECT_EQ(overflow.status, kOverflow) << "a packet longer than the room for it";
  EXPECT_EQ(host.in(0x81, 512).length, 88u);
}

TEST_F(SimulatedUsb, TellsWhatWasTakenOfATransferThatIsTakenBack) {
  SimulatorProcess device = start({"--fault", "slow-print=0"});
  UsbipHost host(device);
  Bytes data(std::size_t{256} << 10);
  std::minstd_rand random(1);
  std::generate(data.begin(), data.end(), [&random] { return static_cast<std::uint8_t>(random() | 1); });
  const std::uint32_t first = host.beginOut(0x01, data);
  const std::uint32_t second = host.beginOut(0x01, data);
  const auto untouched = host.unlink(second);
  EXPECT_EQ(untouched.first, kCancelled);
  EXPECT_FALSE(untouched.second) << "nothing was taken";
  const auto [status, taken] = host.unlink(first);
  EXPECT_EQ(status, 0);
  ASSERT_TRUE(taken);
  EXPECT_EQ(taken->status, kCancelled);
  EXPECT_THAT(taken->length, AllOf(Ge(kPacket), Lt(data.size() / 2)));
  EXPECT_EQ(taken->length % kPacket, 0u);
  EXPECT_EQ(host.unlink(first).first, 0) << "it has ended";
  const std::uint32_t rest =
      host.beginOut(0x01, Bytes(data.begin() + static_cast<std::ptrdiff_t>(taken->length), data.end()));
  device.order("clear-faults");
  EXPECT_EQ(host.end(rest).length, data.size() - taken->length);
  host.out(0x01, kMarker);
  device.nextJob();
  EXPECT_EQ(stored(1), data);
}

TEST_F(SimulatedUsb, LosesNothingThatItHasTaken) {
  int job = 0;
  for (const char* const ending :
       {"01 0B 00 00 00 00 00 00", "21 02 00 00 00 00 00 00", "00 09 01 00 00 00 00 00"}) {
    SimulatorProcess device = start({"--family", "BpdPrinter", "--fault", "slow-print=0"});
    UsbipHost host(device);
    host.selectPackets();
    const auto taken = host.unlink(host.beginOut(0x01, repeated(std::size_t{256} << 10, 'p'))).second;
    host.control(ending);
    device.order("clear-faults");
    ASSERT_TRUE(taken) << ending;
    EXPECT_EQ(device.nextJob().at("bytes"), taken->length) << ending;
    EXPECT_EQ(stored(++job), repeated(taken->length, 'p')) << ending;
  }
  SimulatorProcess device = start({"--family", "BpdPrinter"});
  UsbipHost host(device);
  host.selectPackets();
  const Bytes half = hex("A5 7F FF") + repeated(kPacket - 3, 'p');
  host.out(0x01, half);
  host.selectPackets();
  device.nextJob();
  EXPECT_EQ(stored(++job), half) << "it has not become a packet";
}

TEST_F(SimulatedUsb, EndsItsConnectionsToThePorts) {
  SimulatorProcess device = start();
  UsbipHost host(device);
  for (const char* const ending :
       {"01 0B 00 00 00 00 00 00", "23 03 04 00 01 00 00 00", "00 09 01 00 00 00 00 00"}) {
    host.out(0x01, bytesOf("data"));
    EXPECT_EQ(host.ask(ending), "");
    EXPECT_EQ(device.nextJob().at("outcome"), "lost") << ending;
  }
  const std::uint32_t reading = host.beginIn(0x82, 64);
  host.control("01 0B 00 00 01 00 00 00");
  EXPECT_EQ(host.end(reading).status, -108) << "what waits at an endpoint that is set up anew";
  {
    const UsbipHost left = std::move(host);
    UsbipHost(device).out(0x01, bytesOf("data"));
  }
  EXPECT_EQ(device.nextJob().at("outcome"), "lost") << "the last host has left";
}

TEST_F(SimulatedUsb, TakesASecondOfSilenceForAnEnd) {
  SimulatorProcess busy = start({"--family", "BpdPrinter", "--fault", "slow-print=0"});
  UsbipHost asks(busy);
  const Bytes data = repeated(100000, 'p');
  const std::uint32_t printing = asks.beginOut(0x01, data);
  EXPECT_EQ(asks.unlink(asks.beginIn(0x83, 64)).first, kCancelled);
  SimulatorProcess silent({"--family", "BpdPrinter", "--plain", "--usb=0", "--events"});
  UsbipHost(silent).out(0x01, bytesOf("of a host that leaves"));
  EXPECT_EQ(silent.nextJob().at("outcome"), "complete");
  UsbipHost prints(silent);
  prints.out(0x01, data);
  EXPECT_EQ(silent.nextJob().at("outcome"), "complete") << "no more data has come";

  busy.order("button 1");
  const std::uint32_t reading = asks.beginIn(0x83, 64);
  busy.order("button 2");
  EXPECT_EQ(toHex(asks.end(reading).data), "01 08 00 01 01 02 00 00 00 00 00")
      << "nobody asked for the first";
  busy.order("clear-faults");
  EXPECT_EQ(asks.end(printing).length, data.size());
  asks.control("21 02 00 00 00 00 00 00");
  EXPECT_EQ(busy.nextJob().at("bytes"), data.size()) << "one job: its data was waiting all the time";
}

// The same bytes come as from the TCP port.
TEST_F(SimulatedUsb, ScansAsByTcp) {
  const std::string document =
      "<?xml version=\"1.0\"?>\r\n<method name=\"removeObserver\" requestID=\"42\">\r\n"
      "<arg name=\"objName\">system</arg><arg name=\"event\">systemUpdate</arg>"
      "<arg name=\"observer\">O</arg>\r\n</method>\r\n";
  const struct {
    const char* family;
    Bytes request;
    std::size_t length;  // of all that comes
  } rows[] = {
      {"CpdPrinter", hex("1B 53 44 4B 00 4B 00 00 1B 53 47 00 00 00 00 00"), 8 + 637 * 877 + 18 * 8 + 8},
      {"BpdPrinter",
       hex("42 4B 01 00 00 00 00") + Bytes{static_cast<std::uint8_t>(document.size())} + bytesOf(document),
       8 + 90},
  };
  for (const auto& row : rows) {
    SimulatorProcess device = start({"--family", row.family});
    SimulatorProcess other({"--family", row.family});
    Stream tcp = Stream::connect(other.address(), other.scanPort());
    tcp.send(row.request);
    UsbipHost host(device);
    EXPECT_EQ(host.out(0x02, row.request).length, row.request.size());
    Bytes received;
    while (received.size() < row.length) {
      const UsbResult part = host.in(0x82, 16384);
      ASSERT_EQ(part.status, 0);
      received = received + part.data;
    }
    EXPECT_EQ(received, tcp.receive(row.length)) << row.family;
  }
}

TEST_F(SimulatedUsb, SendsReportsAsLongAsAHostAsks) {
  SimulatorProcess device = start();
  UsbipHost host(device);
  const auto next = [&](std::uint32_t length) { return toHex(host.in(0x83, length).data); };
  std::uint32_t waiting = host.beginIn(0x83, 64);
  device.order("button 3");
  EXPECT_EQ(toHex(host.end(waiting).data), "01 08 00 01 01 03 00 00 00 00 00");
  EXPECT_EQ(next(64), "01 08 00 01 01 00 00 00 00 00 00");
  device.order("report " + toHex(repeated(125, 7)));
  EXPECT_EQ(next(256).size(), 128u * 3 - 1) << "two packets";
  device.order("report " + toHex(repeated(61, 7)));
  EXPECT_EQ(next(64), "01 3D 00 " + toHex(repeated(61, 7)));
  EXPECT_EQ(next(64), "") << "the end of a report of full packets";
  waiting = host.beginIn(0x83, 64);
  device.order("reports 5000");
  for (std::uint32_t i = 0; i < 5000; ++i) {
    const Bytes report = host.end(waiting).data;
    waiting = host.beginIn(0x83, 64);
    ASSERT_EQ(report.size(), 11u);
    ASSERT_EQ(report[5] | report[6] << 8 | report[7] << 16, static_cast<int>(i));
  }
}

TEST_F(SimulatedUsb, HasFaultsOfTheBus) {
  SimulatorProcess device = start();
  UsbipHost host(device);
  host.selectPackets();
  const auto ask = [&] {
    host.out(0x01, hex(kSummary));
    return host.in(0x81, 1024);
  };
  device.order("fault usb-short=20");
  EXPECT_EQ(ask().length, 20u);
  EXPECT_EQ(host.in(0x81, 1024).length, 11u);
  device.order("clear-faults");
  device.order("fault usb-zero:1");
  EXPECT_EQ(ask().length, 0u);
  EXPECT_EQ(host.in(0x81, 1024).length, 31u);
  device.order("fault usb-babble:1");
  EXPECT_EQ(ask().status, kOverflow);
  EXPECT_EQ(ask().length, 31u);

  host.out(0x01, repeated(2000, 'p'));  // before the fault
  device.order("fault usb-stall=1000:1");
  const UsbResult stalled = host.out(0x01, repeated(4096, 'p'));
  EXPECT_EQ(stalled.status, kStalled);
  EXPECT_EQ(stalled.length, 1024u) << "with the packet that brings the byte";
  EXPECT_EQ(host.out(0x01, repeated(10, 'p')).status, kStalled) << "as long as it is halted";
  host.clearHalt(0x01);
  EXPECT_EQ(host.out(0x01, repeated(3072, 'p')).length, 3072u);
  host.out(0x01, {});
  EXPECT_EQ(ask().length, 31u);
  host.out(0x01, kMarker);
  EXPECT_EQ(device.nextJob().at("bytes"), 2000 + 4096);
}

// A connection that a port closes shows as a halt, once; then all is as at the beginning.
TEST_F(SimulatedUsb, HaltsWhenAPortClosesItsConnection) {
  SimulatorProcess device = start();
  UsbipHost host(device);
  host.selectPackets();
  const Bytes version = hex("1B 53 56 00 00 00 00 00");
  const struct {
    const char* fault;
    std::uint8_t to;
    Bytes request;
    std::uint8_t from;
    std::size_t reply;
  } rows[] = {
      {"close-bidi=summary:1", 0x01, hex(kSummary), 0x81, 31},
      {"close-bidi=version:1", 0x02, version, 0x82, 118},
      {"close-mid-page=1000:1", 0x02, hex("1B 53 47 00 00 00 00 00"), 0x82, 16384},
  };
  for (const auto& row : rows) {
    device.order(std::string("fault ") + row.fault);
    host.out(row.to, row.request);
    UsbResult result;
    for (int before = 0; before < 3 && result.status == 0; ++before) result = host.in(row.from, 16384);
    EXPECT_EQ(result.status, kStalled) << row.fault;
    EXPECT_EQ(host.in(row.from, 16384).status, kStalled) << row.fault;
    host.clearHalt(row.from);
    host.out(row.to, row.request);
    EXPECT_THAT(host.in(row.from, 16384).length, Ge(row.reply == 16384 ? 1u : row.reply)) << row.fault;
    host.control("01 0B 00 00 01 00 00 00");  // forget the rest of the page
  }
  // What finds the connection closed goes over the next one.
  for (const auto& row : {rows[0], rows[1]}) {
    device.order(std::string("fault ") + row.fault);
    host.out(row.to, row.request);
    device.order("load 1");
    device.order("load 1");
    host.out(row.to, row.request);
    EXPECT_EQ(host.in(row.from, 16384).status, kStalled) << row.fault;
    host.clearHalt(row.from);
    EXPECT_EQ(host.in(row.from, 16384).length, row.reply) << row.fault;
  }
  device.order("fault close-mid-job=1000:1");
  UsbResult result;
  std::size_t sent = 0;
  while (result.status == 0) sent += (result = host.out(0x01, repeated(4096, 'p'))).length;
  EXPECT_EQ(result.status, kStalled);
  EXPECT_THAT(sent, Ge(1000u));
  EXPECT_EQ(device.nextJob().at("outcome"), "lost");
  host.clearHalt(0x01);
  host.out(0x01, bytesOf("next") + kMarker);
  EXPECT_EQ(device.nextJob().at("bytes"), 4);
}

TEST_F(SimulatedUsb, IsUnpluggedInTheMiddleOfAJob) {
  for (const char* const family : {"CpdPrinter", "BpdPrinter"}) {
    SimulatorProcess device = start({"--family", family, "--fault", "usb-unplug=100000:1"});
    UsbipHost host(device);
    UsbipHost other(device);
    const std::uint32_t reading = other.beginIn(0x82, 512);
    host.beginOut(0x01, repeated(std::size_t{512} << 10, 'p'));
    EXPECT_TRUE(host.stream().isEnded());
    EXPECT_THROW(other.end(reading), std::runtime_error) << "everybody loses it";
    const nlohmann::json job = device.nextJob();
    EXPECT_EQ(job.at("outcome"), "lost") << family;
    EXPECT_EQ(job.at("bytes"), 100352) << "whole packets";
    EXPECT_THROW(UsbipHost{device}, std::runtime_error) << "it is not plugged";
    device.order("unplug");
    device.order("plug");
    EXPECT_EQ(UsbipHost(device).out(0x01, bytesOf("again")).length, 5u);
  }
}

TEST_F(SimulatedUsb, ListsTheDevice) {
  SimulatorProcess device = start();
  Stream asks = Stream::connect(device.address(), device.readyLine().at("usb"));
  const auto list = [&](std::size_t length) {
    asks.send(bigEndian({0x01118005, 0}));
    return toHex(asks.receive(length));
  };
  EXPECT_THAT(list(12 + 312 + 3 * 4),
              AllOf(testing::StartsWith("01 11 00 05 00 00 00 00 00 00 00 01 "), HasSubstr(" 31 2D 31 00 "),
                    testing::EndsWith("00 00 00 01 00 00 00 02 00 00 00 03 12 09 00 01 01 00 00 00 00 "
                                      "01 01 03 07 01 01 00 FF 01 01 00 03 00 00 00")));
  device.order("unplug");
  EXPECT_EQ(list(12), "01 11 00 05 00 00 00 00 00 00 00 00");
  EXPECT_TRUE(SimulatorProcess().command("unplug").contains("error")) << "has no USB side";
}

TEST_F(SimulatedUsb, SurvivesHostileHosts) {
  SimulatorProcess device = start({"--fault", "slow-print=0"});
  const Bytes import = usbipQuestion(0x8003, "1-1");
  const auto submit = [](std::uint32_t direction, std::uint32_t endpoint, std::uint32_t length,
                         std::uint32_t packets = 0) {
    return bigEndian({1, 7, 0x10002, direction, endpoint, 0, length, 0, packets, 0, 0, 0});
  };
  const struct {
    const char* what;
    Bytes bytes;
  } kEnding[] = {
      {"another version", hex("01 06 80 05 00 00 00 00")},
      {"an unknown question", hex("01 11 80 07 00 00 00 00")},
      {"a command before the import", submit(1, 1, 64)},
      {"a question after it", import + import + import},
      {"an unknown command", import + bigEndian({9, 7, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0})},
      {"no direction", import + submit(2, 1, 64)},
      {"no endpoint", import + submit(1, 16, 64)},
      {"isochronous", import + submit(1, 1, 64, 5)},
      {"too much data", import + submit(0, 1, (1u << 20) + 1)},
      {"less than no data", import + submit(0, 1, 0xFFFFFFFF)},
  };
  for (const auto& row : kEnding) {
    Stream host = Stream::connect(device.address(), device.readyLine().at("usb"));
    host.send(row.bytes);
    EXPECT_TRUE(host.isEnded()) << row.what;
  }
  UsbipHost host(device);
  EXPECT_EQ(host.in(0x85, 64).status, kStalled) << "no such endpoint";
  EXPECT_EQ(host.in(0x82, (1u << 20) + 1).status, -12) << "more than is taken";
  std::uint32_t reading = 0;
  int refused = 0;
  for (int i = 0; i < 20; ++i) host.beginOut(0x01, repeated(1 << 20, 'p'));
  const std::uint32_t last = host.beginOut(0x01, {});
  for (std::uint32_t number = last - 20; number < last; ++number) {
    if (host.unlink(number).second.value_or(UsbResult{}).status == -12) ++refused;
  }
  EXPECT_EQ(refused, 4) << "of what is more than 16 MiB together";
  for (int i = 0; i < 1025; ++i) reading = host.beginIn(0x82, 64);
  EXPECT_EQ(host.end(reading).status, -12) << "more transfers than are taken";

  std::minstd_rand random(2);
  for (int round = 0; round < 200; ++round) {
    Bytes noise = import;
    for (int command = 0; command < 20; ++command) {
      Bytes bytes = submit(static_cast<std::uint32_t>(random() % 2), static_cast<std::uint32_t>(random() % 4),
                           static_cast<std::uint32_t>(random() % 2000)) +
                    repeated(random() % 2000, 0xA5);
      if (random() % 4 == 0) bytes[random() % bytes.size()] = static_cast<std::uint8_t>(random());
      noise = noise + bytes;
    }
    Stream::connect(device.address(), device.readyLine().at("usb")).send(noise);
  }
  device.order("clear-faults");
  UsbipHost next(device);
  next.selectPackets();
  next.out(0x01, hex(kSummary));
  EXPECT_EQ(next.in(0x81, 1024).length, 31u);
}

}  // namespace
}  // namespace qvn::test
