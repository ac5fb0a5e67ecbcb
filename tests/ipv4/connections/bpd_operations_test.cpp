// What Bpd printers ask of the transport: of devices that speak NPA and of those that take print data only.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>

#include "support/simulator/simulator_process.h"
#include "support/transport/transport_module.h"

namespace qvn::test {
namespace {

constexpr char kSummary[] = "A5 00 03 50 01 00";
constexpr char kEnterNpaMode[] = "A5 00 10 80 A4 5B A4 5B 10 EF A4 5B 11 EE 00 FF 13 EC 2E";
constexpr char kNameJob[] = "A5 00 0A 50 E0 02 00 01 04 61 62 63 00";
constexpr char kNumber[] = "01 00 00 00";

class BpdOperations : public testing::Test {
 protected:
  BpdOperations() { installSettings(); }

  std::uint32_t run(const char* name, Connectable& connection, Device& device, std::string_view bytes) {
    const Bytes content = hex(bytes);
    Data data(content.data(), static_cast<std::uint32_t>(content.size()));
    return visit(module, connection, name, &data, &device);
  }

  std::uint32_t npaMode(const std::string& attributes) {
    Device device;
    const OpenConnection bidi(module, attributes, "bidi");
    EXPECT_EQ(bidi.openCode(), 0u);
    Data answer(4, 0xFF);
    EXPECT_EQ(visit(module, *bidi, visitor_name::kGetNpaMode, &answer, &device), 0u);
    std::uint32_t mode = 99;
    if (answer.getLength() == sizeof mode) std::memcpy(&mode, answer.getBuffer(), sizeof mode);
    return mode;
  }

  TransportModule module;
};

TEST_F(BpdOperations, TellsWhoSpeaksNpaWithoutTakingAPlainPrintersOnlyConnection) {
  const SimulatorProcess simulator({"--family", "BpdPrinter"});
  EXPECT_EQ(npaMode(attributeText(simulator.printPort(), simulator.bidiPort())), 1u);

  const Listener plain;
  EXPECT_EQ(npaMode(attributeText(plain.port(), 0)), 0u);
  const std::string noChannel =
      "<Address>127.0.0.1</Address><Handle>7</Handle><IpPort>" + std::to_string(plain.port()) + "</IpPort>";
  EXPECT_EQ(npaMode(noChannel), 0u);
  EXPECT_FALSE(plain.isWaiting()) << "somebody connected to the print port";

  Device device;
  const OpenConnection bidi(module, noChannel, "bidi");
  EXPECT_EQ(exchange(module, *bidi, device, kSummary).result, 1u);
}

TEST_F(BpdOperations, AnswersByDeviceAndByTheFormOfTheData) {
  SimulatorProcess simulator({"--family", "BpdPrinter"});
  const std::string header =
      "<JobName>j</JobName><NpaSupported>1</NpaSupported><SpoolerJobId>3</SpoolerJobId>";
  const struct {
    const char* name;
    Bytes data;
    std::uint32_t npa;
    std::uint32_t plain;
  } kCases[] = {
      {visitor_name::kGetNpaMode, hex("00 00"), 87, 87},
      {visitor_name::kGetNpaMode, {}, 87, 87},
      {visitor_name::kSetNpaWrapMode, hex(kNumber), 0, 0},
      {visitor_name::kSetNpaWrapMode, hex("01 00 00"), 87, 87},
      {visitor_name::kSetNonNpaPrinter, hex(kNumber), 0, 0},
      {visitor_name::kSetNonNpaPrinter, hex("01 00 00 00 00"), 87, 87},
      {visitor_name::kStartNpaMode, hex(kEnterNpaMode), 0, 1},
      {visitor_name::kStartNpaMode, hex("A5 00 10 80"), 87, 1},
      {visitor_name::kNamePrintJob, hex(kNameJob), 0, 1},
      {visitor_name::kNamePrintJob, hex("E0 02"), 87, 1},
      {visitor_name::kJobHeader, bytesOf(header), 0, 0},
      {visitor_name::kJobHeader, bytesOf("<JobName>j"), 87, 87},
      {visitor_name::kJobHeader, {}, 87, 87},
      {visitor_name::kFlushPrintBuffer, {}, 0, 0},
  };
  Listener rawPort;
  Device npa;
  Device plain;
  npa.setAttributes(attributeText(simulator.printPort(), simulator.bidiPort()));
  plain.setAttributes(attributeText(rawPort.port(), 0, "127.0.0.1", 8));
  const OpenConnection npaBidi(module, npa.getAttributes(), "bidi");
  for (const char* name : {"bidi", "print"}) {
    const OpenConnection onNpa(module, npa.getAttributes(), name);
    const OpenConnection onPlain(module, plain.getAttributes(), name);
    for (const auto& c : kCases) {
      Data forNpa(c.data.data(), static_cast<std::uint32_t>(c.data.size()));
      Data forPlain(forNpa);
      EXPECT_EQ(visit(module, *onNpa, c.name, &forNpa, &npa), c.npa)
          << c.name << " on " << name << " " << toHex(c.data);
      EXPECT_EQ(visit(module, *onPlain, c.name, &forPlain, &plain), c.plain)
          << c.name << ", plain, on " << name;
    }
  }
  EXPECT_TRUE(rawPort.accept().receive(1).empty()) << "a raw receiver gets the job's bytes and no others";
}

TEST_F(BpdOperations, SendsWhatHasNoReplyAndWaitsForWhatHas) {
  setSetting("ReadTimeout", 50);
  const std::filesystem::path trace = std::filesystem::path(std::getenv("QVN_HOME")) / "trace";
  SimulatorProcess simulator({"--family", "BpdPrinter", "--trace", trace.string()});
  Device device;
  const OpenConnection bidi(module, attributeText(simulator.printPort(), simulator.bidiPort()), "bidi");
  EXPECT_EQ(run(visitor_name::kStartNpaMode, *bidi, device, kEnterNpaMode), 0u);
  EXPECT_EQ(exchange(module, *bidi, device, kSummary), (ExchangeResult{0, 0}));
  simulator.command("fault drop-reply=name-job:1");
  EXPECT_EQ(run(visitor_name::kNamePrintJob, *bidi, device, kNameJob), 1460u);
  EXPECT_EQ(run(visitor_name::kNamePrintJob, *bidi, device, kNameJob), 0u);

  std::ifstream in(trace);
  std::string first;
  std::getline(in, first);
  EXPECT_EQ(first, R"({"connection":1,"received":"A5001080A45BA45B10EFA45B11EE00FF13EC2E"})");

  bidi->close();
  EXPECT_EQ(run(visitor_name::kStartNpaMode, *bidi, device, kEnterNpaMode), 1229u);
}

TEST_F(BpdOperations, FindsANewWayWhenThePrinterEndedTheConnection) {
  SimulatorProcess simulator({"--family", "BpdPrinter"});
  Device device;
  const OpenConnection bidi(module, attributeText(simulator.printPort(), simulator.bidiPort()), "bidi");
  simulator.command("fault close-bidi=summary:1");
  EXPECT_NE(exchange(module, *bidi, device, kSummary).result, 0u);
  EXPECT_EQ(run(visitor_name::kStartNpaMode, *bidi, device, kEnterNpaMode), 0u);
}

}  // namespace
}  // namespace qvn::test
