#include <gmock/gmock.h>

#include "device/store/printer_store.h"
#include "device/store/scanner_store.h"
#include "platform/process/system_information.h"
#include "qvn/transport/attributes.h"
#include "support/library_fixture.h"

namespace qvn::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::uint32_t> handles;
void found(std::uint32_t, std::uint32_t handle) { handles.push_back(handle); }

class EnumerationTest : public LibraryTest {
 protected:
  std::vector<std::uint32_t> printers(const char* transport, const char* filter) {
    handles.clear();
    EXPECT_EQ(QvnEnumPrinters(1, transport, filter, found), 0u);
    return handles;
  }
};

TEST_F(EnumerationTest, PrintersAreFilteredByTransportAndAttributes) {
  PrinterStore& store = PrinterStore::getInstance();
  store.persist(
      "<Address>10.0.0.1</Address><Handle>1</Handle><Portname>USB001</Portname><Transport>FAKE</Transport>");
  store.persist("<Handle>2</Handle><Transport>FAKE</Transport>");
  store.persist("<Handle>3</Handle><Portname>usb001</Portname><Transport>USB1</Transport>");
  store.persist("<Handle>4</Handle><Portname>usb001</Portname>");
  ApplicationSettings().setString("PrinterStore", "5", "<Transport>FAKE</Transport>", 0);
  EXPECT_THAT(printers("FAKE", nullptr), ElementsAre(1, 2));
  EXPECT_THAT(printers("ALL_TRANSPORT", ""), ElementsAre(1, 2)) << "USB1 is not registered";
  EXPECT_THAT(printers("USB1", ""), ElementsAre(3)) << "a name need not be registered";
  EXPECT_THAT(printers("FAKE", "<Portname>Usb001</Portname>"), ElementsAre(1));
  EXPECT_THAT(printers("FAKE", "<Address>10.0.0.1</Address><Portname>x</Portname>"), IsEmpty());
  EXPECT_THAT(printers("LOCAL_TRANSPORT", ""), IsEmpty());
}

TEST_F(EnumerationTest, DiscoveryStoresWhatTheTransportReports) {
  std::string options;
  fake.onDiscover = [&](const std::string& text) {
    options = text;
    return std::vector{FakeTransport::printerText(7, "NEW"), FakeTransport::deviceText("CpdScanner", 407),
                       FakeTransport::deviceText("CpdHid", 807), std::string("<Device>Teapot</Device>"),
                       std::string("garbage")};
  };
  EXPECT_EQ(QvnDiscovery(1, "ALL_TRANSPORT", "10.0.0.0"), 0u);
  EXPECT_EQ(options, "10.0.0.0");
  EXPECT_THAT(printers("FAKE", nullptr), ElementsAre(7));
  EXPECT_EQ(QvnEnumScanners(1, "NETWORK_TRANSPORT", "ignored", found), 0u);
  EXPECT_EQ(QvnEnumHids(1, "FAKE", nullptr, found), 0u);
  EXPECT_THAT(handles, ElementsAre(7, 407, 807));
  EXPECT_EQ(QvnDiscovery(1, "LOCAL_TRANSPORT", nullptr), 0u) << "none is registered";
  EXPECT_EQ(QvnValidatePortName(1, "NEW"), 52u);
  EXPECT_EQ(QvnValidatePortName(1, "new"), 0u);
}

TEST_F(EnumerationTest, ALookUpByNameSearchesTheLocalTransportsOnce) {
  ApplicationSettings().setString("Transports\\Local", "FAKE", FakeTransport::module(), 0);
  EXPECT_EQ(QvnDiscovery(1, "FAKE", ""), 0u);  // loads the transport, which discovers by itself
  fake.takeCalls();
  std::uint32_t handle = 9;
  EXPECT_EQ(QvnEnumSpecificPrinter(1, "LAB", &handle), 1796u);
  EXPECT_EQ(handle, 0u);
  EXPECT_THAT(fake.calls("discover"), ElementsAre("discover"));
  fake.onDiscover = [](const std::string&) { return std::vector{FakeTransport::printerText(7, "lab")}; };
  EXPECT_EQ(QvnEnumSpecificPrinter(1, "LAB", &handle), 0u);
  EXPECT_EQ(handle, 7u);
  EXPECT_EQ(QvnEnumSpecificScanner(1, "LAB", &handle), 1796u);
  EXPECT_EQ(QvnEnumSpecificHid(1, "LAB", &handle), 1796u);
}

TEST_F(EnumerationTest, TheFirstOperationOnALocalDeviceFindsAllOfThem) {
  ApplicationSettings().setString("Transports\\Local", "FAKE", FakeTransport::module(), 0);
  fake.onDiscover = [](const std::string&) {
    std::vector<std::string> texts;
    for (const char* family : {"CpdPrinter", "BpdPrinter", "CpdScanner", "BpdScanner", "CpdHid"}) {
      texts.push_back(FakeTransport::deviceText(family, 7, "LAB"));
    }
    return texts;
  };
  PrinterStore::getInstance().persist(FakeTransport::printerText(7, "lab"));
  EXPECT_EQ(QvnOpenPrinter(1, 7), 0u);
  EXPECT_THAT(fake.calls("discover"), ElementsAre("discover"));
  EXPECT_EQ(QvnClosePrinter(1, 7), 0u);
}

TEST_F(EnumerationTest, HostInformationHasDefaultsThatStay) {
  std::string name;
  ASSERT_EQ(platform::computerName(name), 0u);
  name.resize(std::min<std::size_t>(name.size(), 13));
  char buffer[32] = "x";
  std::uint32_t required = 0;
  EXPECT_EQ(QvnGetHostInfo(1, attribute::kPcName, buffer, 13, &required), 122u);
  EXPECT_EQ(required, 14u);
  EXPECT_EQ(QvnGetHostInfo(1, attribute::kPcName, buffer, 14, &required), 0u);
  EXPECT_EQ(required, 14u);
  EXPECT_EQ(buffer, name);
  EXPECT_EQ(QvnGetHostInfo(1, attribute::kPcName, buffer, 32, &required), 0u);
  EXPECT_EQ(required, name.size() + 1) << "now it is stored";
  EXPECT_EQ(QvnGetHostInfo(1, attribute::kPinNumber, buffer, 4, &required), 122u);
  EXPECT_EQ(required, 5u);
  EXPECT_EQ(QvnGetHostInfo(1, attribute::kCodePage, buffer, 5, &required), 0u);
  EXPECT_EQ(QvnGetHostInfo(1, attribute::kPortname, buffer, 32, &required), 1168u);
  EXPECT_EQ(QvnSetHostInfo(1, attribute::kPortname, "x", 1), 87u);
  EXPECT_EQ(QvnSetHostInfo(1, attribute::kPcName, "</PcName><Handle>", 1), 87u);
}

}  // namespace
}  // namespace qvn::test
