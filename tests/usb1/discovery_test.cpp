// Devices on the bus become attribute texts, whatever their descriptors say.
#include <deque>

#include "usb1/usb_test.h"

namespace qvn::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using UsbDiscovery = UsbTest;

TEST_F(UsbDiscovery, TellsThePartsOfADevice) {
  begin();
  ASSERT_THAT(texts, SizeIs(3));
  const struct {
    const char* family;
    std::uint32_t handle;
    const char* lastEndpoint;
  } kParts[] = {{"CpdPrinter", 20001, ":1.0/ep_81"},
                {"CpdScanner", 20401, ":1.1/ep_82"},
                {"CpdHid", 20801, ":1.2/ep_83"}};
  for (std::size_t i = 0; i < texts.size(); ++i) {
    EXPECT_EQ(textOf(texts[i], attribute::kDevice), kParts[i].family);
    EXPECT_EQ(numberOf(texts[i], attribute::kHandle), kParts[i].handle);
    EXPECT_EQ(textOf(texts[i], attribute::kEndpoint2DevicePathSuffix), kParts[i].lastEndpoint);
    EXPECT_EQ(textOf(texts[i], attribute::kTransport), "USB1");
    EXPECT_EQ(textOf(texts[i], attribute::kTransportType), "LOCAL_TRANSPORT");
    EXPECT_EQ(textOf(texts[i], attribute::kPrinterModel), "Jet 3");
    EXPECT_EQ(textOf(texts[i], attribute::kSerialNumber), "0001");
    EXPECT_EQ(textOf(texts[i], attribute::kAddress), "1-1");
    EXPECT_EQ(numberOf(texts[i], attribute::kVid), 0x1209u);
    EXPECT_EQ(numberOf(texts[i], attribute::kPid), 1u);
  }
  EXPECT_EQ(numberOf(printer(), attribute::kWritePacketSize), 512u);
  EXPECT_EQ(numberOf(hid(), attribute::kReadPacketSize), 64u);
}

TEST_F(UsbDiscovery, ADeviceKeepsItsHandleWhereverItIsPluggedIn) {
  begin();
  bed.unplug();
  EXPECT_THAT(discovered(*module), IsEmpty());
  bed.plug(device, "1-3");
  ASSERT_EQ(module->discoverer.discoverSpecific(printer()), 0u);
  texts = discovered(*module);
  EXPECT_EQ(numberOf(printer(), attribute::kHandle), 20001u);
  EXPECT_EQ(textOf(printer(), attribute::kAddress), "1-3");
}

TEST_F(UsbDiscovery, TwoWithOneSerialNumberAreTwo) {
  TestDevice twin;
  bed.plug(twin, "1-2");
  begin();
  ASSERT_THAT(texts, SizeIs(6));
  EXPECT_NE(numberOf(texts[0], attribute::kHandle), numberOf(texts[3], attribute::kHandle));
  OpenConnection first(*module, texts[0], "print");
  OpenConnection second(*module, texts[3], "print");
  EXPECT_EQ(second.openCode(), 0u);
  Data data(3, 'x');
  second->write(data);
  EXPECT_THAT(twin.takeReceived(endpoint::kPrintOut), SizeIs(1));
  EXPECT_THAT(device.takeReceived(endpoint::kPrintOut), IsEmpty());
  bed.unplug("1-2");
}

TEST_F(UsbDiscovery, TakesWhatCanBeUsedOfDescriptorsThatLie) {
  const auto printerWith = [](std::uint8_t protocol) {
    return DescriptorBuilder(0x04D8, 2).interface(0, 0, 7, 1, protocol);
  };
  const struct {
    const char* what;
    Bytes descriptors;
    std::vector<std::string> families;
  } kCases[] = {
      {"a plain printer", printerWith(1).bulk(1), {"BpdPrinter"}},
      {"no endpoint", printerWith(1), {}},
      {"IN only", printerWith(2).bulk(0x81), {}},
      {"says it answers and has no IN", printerWith(2).bulk(1), {"BpdPrinter"}},
      {"interrupt instead of bulk", printerWith(2).interrupt(1), {}},
      {"another protocol", printerWith(4).bulk(1).bulk(0x81), {}},
      {"endpoint 0", printerWith(1).bulk(0), {}},
      {"a vendor's interface that nobody knows",
       DescriptorBuilder(0x04D8, 2).interface(0, 0, 0xFF, 1, 1).bulk(1).bulk(0x81),
       {}},
      {"a HID", DescriptorBuilder(0x04D8, 2).interface(0, 0, 3, 0, 0).interrupt(0x81), {"CpdHid"}},
      {"a keyboard",
       DescriptorBuilder(0x04D8, 2)
           .interface(0, 0, 3, 1, 1)
           .interrupt(0x81)
           .interface(1, 0, 3, 0, 0)
           .interrupt(0x82),
       {}},
  };
  module.emplace();
  for (const auto& c : kCases) {
    TestDevice liar(c.descriptors, "MFG:A;MDL:B;");
    bed.plug(liar);
    std::vector<std::string> families;
    for (const std::string& text : discovered(*module)) families.push_back(textOf(text, attribute::kDevice));
    EXPECT_EQ(families, c.families) << c.what;
    bed.unplug();
  }
}

TEST_F(UsbDiscovery, DevicesMayComeAndGo) {
  module.emplace();
  for (int i = 0; i < 20; ++i) {
    bed.plug(device);
    texts = discovered(*module);
    ASSERT_THAT(texts, SizeIs(3));
    OpenConnection print(*module, printer(), "print");
    ASSERT_EQ(print.openCode(), 0u);
    bed.unplug();
  }
  EXPECT_EQ(module->discoverer.discoverSpecific(printer()), 1167u);
}

TEST_F(UsbDiscovery, AHundredMayBePluggedIn) {
  std::deque<TestDevice> devices;
  for (int i = 1; i <= 100; ++i) {
    bed.plug(devices.emplace_back(allInOne(), kNpaDeviceId, std::to_string(i)), "1-" + std::to_string(i));
  }
  module.emplace();
  texts = discovered(*module);
  ASSERT_THAT(texts, SizeIs(300));
  OpenConnection print(*module, texts.at(297), "print");
  EXPECT_EQ(print.openCode(), 0u);
}

TEST_F(UsbDiscovery, OptionsAreNone) {
  begin();
  EXPECT_EQ(module->discoverer.discover("1-1"), 87u);
  EXPECT_EQ(module->discoverer.discoverSpecific("<Vid>1</Vid>"), 87u);
}

}  // namespace
}  // namespace qvn::test
