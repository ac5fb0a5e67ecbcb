// The module's entry points, its connections as objects, and its visitors by name.
#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <thread>

#include "qvn/transport/attributes.h"
#include "qvn/transport/plugin.h"
#include "support/process/forked.h"
#include "support/simulator/simulator_process.h"
#include "support/transport/transport_module.h"

namespace qvn::test {
namespace {

class Ipv4Transport : public testing::Test {
 protected:
  Ipv4Transport() { installSettings(); }
};

std::ptrdiff_t threadCount() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/task"),
                       std::filesystem::directory_iterator());
}

TEST_F(Ipv4Transport, TellsItsNameKindAndInterface) {
  TransportModule module;
  auto* getInfo = reinterpret_cast<transport_entry::GetInfo*>(module.entryPoint(transport_entry::kGetInfo));
  char text[256] = {};
  std::uint32_t reserved = 0;
  EXPECT_EQ(getInfo(text, sizeof text, &reserved), 0u);
  EXPECT_STREQ(text, "<Transport>IPv4</Transport><TransportType>NETWORK_TRANSPORT</TransportType>");
  EXPECT_EQ(getInfo(text, 20, &reserved), 122u);
  EXPECT_EQ(getInfo(nullptr, 256, &reserved), 87u);
  auto* abi =
      reinterpret_cast<transport_entry::GetAbiVersion*>(module.entryPoint(transport_entry::kGetAbiVersion));
  EXPECT_EQ(abi(), QVN_TRANSPORT_ABI_VERSION);
  for (const char* name : {transport_entry::kInstall, transport_entry::kUninstall}) {
    EXPECT_EQ(reinterpret_cast<transport_entry::Install*>(module.entryPoint(name))(), 0u) << name;
  }
}

TEST_F(Ipv4Transport, KeepsAConnectionWhileItIsHeldOrTagged) {
  TransportModule module;
  ConnectionManager& manager = module.connections;
  const std::string seven = attributeText(1, 2);
  Connectable* bidi = manager.getConnection(seven, "bidi");
  EXPECT_EQ(manager.getConnection(seven, "bidi"), bidi);
  EXPECT_EQ(manager.getConnection(seven, "alert"), bidi);
  EXPECT_NE(manager.getConnection(seven, "print"), bidi);
  EXPECT_NE(manager.getConnection(attributeText(1, 2, "127.0.0.1", 8), "bidi"), bidi);
  bidi->setTag(2);
  for (int i = 0; i < 4; ++i) manager.releaseConnection(bidi);  // once too often
  manager.releaseConnection(nullptr);
  EXPECT_EQ(bidi->getTag(), 2u) << "tagged, so it still exists";
  EXPECT_EQ(manager.getConnection(seven, "bidi"), bidi);
  bidi->setTag(0);
  manager.releaseConnection(bidi);
}

TEST_F(Ipv4Transport, OpensWhatNeedsNoChannelAndRefusesWhatItCannotReachInTime) {
  setSetting("NpaTimeout", 50);
  TransportModule module;
  const Listener full(0);
  const Stream filling = Stream::connect("127.0.0.1", full.port());  // the queue takes no other one
  std::uint16_t unused = 0;
  { unused = Listener().port(); }
  const struct {
    const char* name;
    std::string attributes;
    std::uint32_t code;
  } kCases[] = {
      {"cache", "", 0},
      {"configuration", "", 0},
      {"scan", "", 1},
      {"", "", 1},
      {"bidi", "", 87},
      {"print", "<Address>nowhere</Address><IpPort>9</IpPort>", 87},
      {"print", "<Address>127.0.0.1</Address><IpPort>65545</IpPort>", 87},
      {"print", attributeText(unused, unused), 1225},
      {"print", attributeText(full.port(), 1), 1460},
      {"bidi", attributeText(unused, unused), 1225},
      {"bidi", partText("CpdScanner", unused), 1225},
      {"bidi", partText("CpdScanner", 0), 87},
      {"bidi", partText("BpdScanner", unused), 1225},
      {"bidi", partText("BpdScanner", 0), 87},
      {"alert", partText("CpdHid", unused), 1225},
      {"alert", partText("CpdHid", 0), 87},
      {"bidi", partText("CpdHid", unused), 1},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(OpenConnection(module, c.attributes, c.name).openCode(), c.code)
        << c.name << " " << c.attributes;
  }
}

TEST_F(Ipv4Transport, AnswersEachVisitorByName) {
  TransportModule module;
  const std::string good = attributeText(1, 2);
  const struct {
    std::string name;
    std::string data;
    std::uint32_t result;
  } kCases[] = {
      {"startJobPrinter", "", 0},
      {"flushPrintBufferVisitor", "", 0},
      {"setMaxPacketSizeVisitor", "<MaxWritePacketSize>512</MaxWritePacketSize>", 0},
      {"cacheVisitor", "", 1},
      {"escCommandVisitor", "", 1},       // for a Cpd scanner's "bidi"
      {"objectStoreDataVisitor", "", 1},  // for a Bpd scanner's "bidi"
      {"openHidVisitor", "", 1},          // for a HID's "alert"
      {"", "", 1},
      {"npaDataVisitor", "", 1},  // not on this connection
      {attribute::kPortname, good, 0},
      {attribute::kTrueEndOfJob, good, 0},
      {attribute::kAddress, good, 0},
      {attribute::kAddress, "<Address>nowhere</Address>", 87},
      {attribute::kAddress, "", 87},
      {attribute::kIpMask, good, 1},
      {attribute::kHandle, good, 1},
  };
  Device device;
  const OpenConnection connection(module, good, "configuration");
  for (const auto& c : kCases) {
    Data data(c.data);
    EXPECT_EQ(visit(module, *connection, c.name, &data, &device), c.result) << c.name << " " << c.data;
  }
  module.visitors.releaseVisitor(nullptr);
}

TEST_F(Ipv4Transport, LeavesNoThreadBehindAndNothingThatAChildWithoutItsThreadsWouldWaitFor) {
  const SimulatorProcess simulator;
  std::thread([] {}).join();  // a sanitizer starts a thread of its own with the first one
  const std::ptrdiff_t before = threadCount();
  Device device;
  {
    TransportModule module;
    Connectable* bidi =
        module.connections.getConnection(attributeText(simulator.printPort(), simulator.bidiPort()), "bidi");
    ASSERT_EQ(bidi->open(), 0u);
    EXPECT_EQ(exchange(module, *bidi, device, "A5 00 03 50 01 00").result, 0u);
    bidi->setTag(1);
    EXPECT_EQ(threadCount(), before + 2);
    inOwnProcess([] {});
  }
  EXPECT_EQ(threadCount(), before);
}

}  // namespace
}  // namespace qvn::test
