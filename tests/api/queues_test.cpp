// Print queues: shared names in look-ups, and the queues of the default model.
#include <gmock/gmock.h>
#include <stdlib.h>

#include "device/store/hid_store.h"
#include "device/store/printer_store.h"
#include "device/store/scanner_store.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "support/library_fixture.h"

namespace qvn::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t kModel = 0x043D0101;

std::vector<std::string> queues;
void found(std::uint32_t clientId, const char* printer, const char* port) {
  queues.push_back(std::to_string(clientId) + " " + printer + " " + port);
}

// Before the library is initialised: the queues that the stand-in for libcups lists, and the default model.
struct Machine {
  Machine() {
    setenv("QVN_TRANSPORT_PATH", FAKE_CUPS_DIRECTORY, 1);
    setenv("QVN_FAKE_CUPS", "Lab qvn://LAB1\nOffice qvn://OFFICE\nThird socket://192.0.2.1\n", 1);
  }
  ~Machine() { unsetenv("QVN_FAKE_CUPS"); }
};

class Queues : public Machine, public LibraryTest {
 protected:
  Queues() {
    queues.clear();
    ApplicationSettings().setLong("Runtime\\", "DefaultModelId", kModel, SettingsStore::kLocal);
  }

  static std::string device(std::uint32_t handle, const std::string& port, std::uint32_t model = kModel,
                            const std::string& transport = FakeTransport::kName) {
    std::string text;
    AttributeCodec::setLong(text, attribute::kHandle, handle);
    AttributeCodec::setString(text, attribute::kPortname, port);
    AttributeCodec::setLong(text, attribute::kVid, model >> 16);
    AttributeCodec::setLong(text, attribute::kPid, model & 0xFFFF);
    if (!transport.empty()) AttributeCodec::setString(text, attribute::kTransport, transport);
    return text;
  }

  std::vector<std::string> scanners(const char* transport = "ALL_TRANSPORT") {
    queues.clear();
    EXPECT_EQ(QvnEnumWindowsScanners(5, transport, found), 0u);
    return queues;
  }

  std::vector<std::string> hids() {
    queues.clear();
    EXPECT_EQ(QvnEnumWindowsHids(5, "ALL_TRANSPORT", found), 0u);
    return queues;
  }
};

TEST_F(Queues, ASharedNameStandsForItsQueuesPort) {
  PrinterStore::getInstance().persist(device(7, "lab1"));
  ScannerStore::getInstance().persist(device(8, "LAB1"));
  HidStore::getInstance().persist(device(9, "LAB1"));
  PrinterStore::getInstance().persist(device(10, "\\\\server\\none"));
  const struct {
    const char* name;
    std::uint32_t printer;
    std::uint32_t scanner;
    std::uint32_t hid;
  } cases[] = {
      {"\\\\server\\Lab", 7, 8, 0},
      {"\\\\\\lAB", 7, 8, 0},
      {"LAB1", 7, 8, 9},
      {"\\\\server\\Office", 0, 0, 0},
      {"\\\\server\\Lab\\x", 0, 0, 0},
      {"\\\\Lab", 0, 0, 0},
      {"\\server\\Lab", 0, 0, 0},
      {"Lab", 0, 0, 0},
      {"\\\\server\\NONE", 10, 0, 0},
      {"\\\\", 0, 0, 0},
  };
  for (const auto& c : cases) {
    const std::pair<decltype(&QvnEnumSpecificPrinter), std::uint32_t> lookUps[] = {
        {QvnEnumSpecificPrinter, c.printer},
        {QvnEnumSpecificScanner, c.scanner},
        {QvnEnumSpecificHid, c.hid}};
    for (const auto& [lookUp, expected] : lookUps) {
      std::uint32_t handle = 1;
      EXPECT_EQ(lookUp(1, c.name, &handle), expected == 0 ? 1796u : 0u) << c.name;
      EXPECT_EQ(handle, expected) << c.name;
    }
  }
}

TEST_F(Queues, QueuesOnDevicesOfTheDefaultModelAreReported) {
  ScannerStore& store = ScannerStore::getInstance();
  store.persist(device(1, "lab1"));
  store.persist(device(2, "OFFICE", kModel + 1));
  store.persist(device(3, "socket://192.0.2.1", kModel, "IPv4"));
  HidStore::getInstance().persist(device(4, "OFFICE"));
  EXPECT_THAT(scanners(), ElementsAre("5 Lab LAB1", "5 Third socket://192.0.2.1"));
  EXPECT_THAT(scanners("fake"), ElementsAre("5 Lab LAB1"));
  EXPECT_THAT(scanners("NETWORK_TRANSPORT"), ElementsAre("5 Third socket://192.0.2.1"));
  EXPECT_THAT(hids(), ElementsAre("5 Office OFFICE"));
  EXPECT_THAT(fake.calls("discover"), IsEmpty());
}

TEST_F(Queues, ADeviceThatDoesNotTellItsModelOrTransportIsLeftOut) {
  ApplicationSettings().setLong("Runtime\\", "DefaultModelId", 0, SettingsStore::kLocal);
  ScannerStore& store = ScannerStore::getInstance();
  store.persist("<Handle>1</Handle><Portname>LAB1</Portname><Transport>FAKE</Transport>");
  store.persist(device(2, "OFFICE", 0, ""));
  store.persist(device(3, "socket://192.0.2.1", 0, std::string(64, 'T')));
  EXPECT_THAT(scanners(), IsEmpty());
}

TEST_F(Queues, ADeviceKnownAsAPrinterAloneIsLookedForOnce) {
  PrinterStore::getInstance().persist(device(1, "LAB1"));
  PrinterStore::getInstance().persist(device(2, "OFFICE"));
  int discoveries = 0;
  fake.onDiscover = [&](const std::string&) {
    ++discoveries;
    ScannerStore::getInstance().persist(device(1, "LAB1"));
    return std::vector<std::string>();
  };
  EXPECT_THAT(scanners("FAKE"), ElementsAre("5 Lab LAB1")) << "found by the discovery of this call";
  EXPECT_EQ(discoveries, 1) << "although OFFICE is not found either";
  EXPECT_THAT(scanners("HBN1"), IsEmpty());
  EXPECT_EQ(discoveries, 1) << "only the transports asked for look";
}

TEST_F(Queues, WithoutASpoolerThereAreNone) {
  PrinterStore::getInstance().persist(device(7, "LAB1"));
  ScannerStore::getInstance().persist(device(8, "LAB1"));
  unsetenv("QVN_FAKE_CUPS");
  EXPECT_THAT(scanners(), IsEmpty());
  EXPECT_THAT(hids(), IsEmpty());
  std::uint32_t handle = 1;
  EXPECT_EQ(QvnEnumSpecificPrinter(1, "\\\\server\\Lab", &handle), 1796u);
  EXPECT_EQ(QvnEnumSpecificPrinter(1, "LAB1", &handle), 0u);
}

}  // namespace
}  // namespace qvn::test
