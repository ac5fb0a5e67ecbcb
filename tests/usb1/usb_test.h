// What tests of the USB transport have in common: the bed, a device that is scripted, and the module.
#pragma once

#include <gmock/gmock.h>

#include <optional>
#include <string>
#include <vector>

#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "qvn/transport/observer.h"
#include "qvn/transport/settings.h"
#include "support/registry_values.h"
#include "support/transport/logging_device.h"
#include "support/transport/transport_module.h"
#include "support/usb/descriptor_builder.h"
#include "support/usb/usb_bed.h"

namespace qvn::test {

namespace endpoint {
inline constexpr std::uint8_t kPrintOut = 0x01;
inline constexpr std::uint8_t kPrintIn = 0x81;
inline constexpr std::uint8_t kScanOut = 0x02;
inline constexpr std::uint8_t kScanIn = 0x82;
inline constexpr std::uint8_t kHidIn = 0x83;
}  // namespace endpoint

inline constexpr char kNpaDeviceId[] = "MFG:Qvn;MDL:Jet 3;CMD:PJL,NPA;SN:X;FAM:CpdPrinter;";
inline constexpr std::uint16_t kTestVendor = 0x1209;

// A printer that answers, with a scanner and a HID.
inline Bytes allInOne(std::uint16_t vendor = kTestVendor) {
  return DescriptorBuilder(vendor, 0x0001)
      .interface(0, 0, 7, 1, 1)
      .bulk(endpoint::kPrintOut)
      .interface(0, 1, 7, 1, 2)
      .bulk(endpoint::kPrintOut)
      .bulk(endpoint::kPrintIn)
      .interface(1, 0, 0xFF, 1, 1)
      .bulk(endpoint::kScanOut)
      .bulk(endpoint::kScanIn)
      .interface(2, 0, 3, 0, 0)
      .interrupt(endpoint::kHidIn);
}

// The text of a device id as GET_DEVICE_ID answers it.
inline Bytes deviceIdAnswer(const std::string& text) {
  const std::size_t length = text.size() + 2;
  Bytes answer{static_cast<std::uint8_t>(length >> 8), static_cast<std::uint8_t>(length & 0xFF)};
  answer.insert(answer.end(), text.begin(), text.end());
  return answer;
}

struct TestDevice : ScriptedDevice {
  explicit TestDevice(Bytes descriptors = allInOne(), std::string id = kNpaDeviceId,
                      std::string serial = "0001")
      : ScriptedDevice(std::move(descriptors), {"Qvn", "Scripted", std::move(serial)}) {
    onControl = [id = std::move(id)](const Setup& setup, auto) -> std::optional<Bytes> {
      if (setup[0] == 0xA1 && setup[1] == 0) return deviceIdAnswer(id);
      if (setup[0] == 0xA1 && setup[1] == 1) return Bytes{0x30};
      return setup[0] == 0x21 ? std::optional(Bytes()) : std::nullopt;
    };
  }
};

// The attribute texts that a discovery tells.
inline std::vector<std::string> discovered(TransportModule& module, std::uint32_t expected = 0) {
  struct Texts : Observer {
    void doUpdate(const std::string& text) override { texts.push_back(text); }
    using Observer::doUpdate;
    std::vector<std::string> texts;
  } told;
  told.attachTo(module.discoverer);
  EXPECT_EQ(module.discoverer.discover(""), expected);
  told.detachFrom(module.discoverer);
  return told.texts;
}

inline std::string textOf(const std::string& attributes, const char* descriptor) {
  std::string value;
  if (AttributeCodec::getString(attributes, descriptor, value) != 0) return "-";
  return value;
}
inline std::uint32_t numberOf(const std::string& attributes, const char* descriptor) {
  std::uint32_t value = 0;
  AttributeCodec::getLong(attributes, descriptor, value);
  return value;
}

class UsbTest : public testing::Test {
 protected:
  UsbTest() { set("Usb1WriteSize", 65536); }

  static void set(const char* name, std::uint32_t value) {
    store(std::string(kLibraryRegistryRoot) + "Usb1\\Settings\\", name, value);
  }

  // Plugs the device in and starts the transport; the attribute texts of its parts.
  const std::vector<std::string>& begin() {
    bed.plug(device);
    module.emplace();
    return texts = discovered(*module);
  }
  const std::string& printer() { return texts.at(0); }
  const std::string& scanner() { return texts.at(1); }
  const std::string& hid() { return texts.at(2); }

  TestDevice device;
  UsbBed bed;
  LoggingDevice client;
  std::optional<TransportModule> module;
  std::vector<std::string> texts;
};

}  // namespace qvn::test
