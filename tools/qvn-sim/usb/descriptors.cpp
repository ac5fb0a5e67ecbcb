#include "usb/descriptors.h"

#include <iconv.h>

#include <algorithm>
#include <array>
#include <iterator>

#include "base/little_endian.h"

namespace sim::usb {
namespace {

constexpr std::uint8_t kBulk = 2;
constexpr std::uint8_t kInterrupt = 3;
constexpr std::uint8_t kPrinterClass = 0x07;
constexpr std::uint8_t kHidClass = 0x03;
constexpr std::uint8_t kVendorClass = 0xFF;
constexpr std::uint16_t kBulkPacketSize = 512;

constexpr std::uint8_t low(std::uint16_t value) { return static_cast<std::uint8_t>(value & 0xFF); }
constexpr std::uint8_t high(std::uint16_t value) { return static_cast<std::uint8_t>(value >> 8); }

constexpr Endpoint bulk(std::uint8_t address) { return {address, kBulk, kBulkPacketSize, 0}; }

// Each begins with its length and type.
// clang-format off
constexpr std::array<std::uint8_t, 18> kDevice = {
    18, kDeviceDescriptor, 0x00, 0x02,  // USB 2.0
    0, 0, 0,                            // classes are told by the interfaces
    64,                                 // the longest packet of a control request
    low(kVendor), high(kVendor), low(kProduct), high(kProduct), low(kRelease), high(kRelease),
    1, 2, 3,                            // strings: manufacturer, product, serial number
    1,                                  // configuration
};
// clang-format on

constexpr std::array<std::uint8_t, 4> kLanguages = {4, kStringDescriptor, 0x09, 0x04};  // English

// Reports 1 and events 2 of any bytes, of a vendor's usage page.
// clang-format off
constexpr std::array<std::uint8_t, 31> kReports = {
    0x06, 0x00, 0xFF, 0x09, 0x01, 0xA1, 0x01,                     // usage page and usage, collection
    0x15, 0x00, 0x26, 0xFF, 0x00, 0x75, 0x08,                     // bytes
    0x85, 0x01, 0x09, 0x02, 0x95, kReportPacket - 1, 0x81, 0x02,  // report 1
    0x85, 0x02, 0x09, 0x03, 0x95, kReportPacket - 1, 0x81, 0x02,  // event 2
    0xC0,
};
// clang-format on

constexpr std::array<std::uint8_t, 9> kHid = {
    9, kHidDescriptor, 0x11, 0x01, 0, 1, kReportDescriptor, kReports.size(), 0};

constexpr std::size_t kConfigurationHeader = 9;
constexpr std::uint8_t kSelfPowered = 0xC0;
constexpr std::size_t kLongestString = 126;  // UTF-16 units in a descriptor

void append(Bytes& to, ByteView bytes) { to.insert(to.end(), bytes.begin(), bytes.end()); }

void appendInterface(Bytes& to, const Interface& of) {
  append(to, std::array<std::uint8_t, 9>{9, 4, of.number, of.alternate,
                                         static_cast<std::uint8_t>(of.endpoints.size()), of.interfaceClass,
                                         of.subclass, of.protocol, 0});
  if (of.interfaceClass == kHidClass) append(to, kHid);
  for (const Endpoint& endpoint : of.endpoints) {
    append(to, std::array<std::uint8_t, 7>{7, 5, endpoint.address, endpoint.type, low(endpoint.packetSize),
                                           high(endpoint.packetSize), endpoint.interval});
  }
}

Bytes configuration(const Description& device) {
  Bytes bytes = {kConfigurationHeader, kConfigurationDescriptor, 0, 0, 0, kConfiguration, 0, kSelfPowered, 1};
  std::uint8_t interfaces = 0;
  for (const Interface& interface : interfacesOf(device)) {
    appendInterface(bytes, interface);
    if (interface.alternate == 0) ++interfaces;
  }
  writeLittle16(&bytes[2], bytes.size());
  bytes[4] = interfaces;
  return bytes;
}

// UTF-8 as UTF-16, up to what is none or has no room.
Bytes string(std::string text) {
  std::array<char, 2 * kLongestString> wide{};
  char* from = text.data();
  std::size_t left = text.size();
  char* to = wide.data();
  std::size_t room = wide.size();
  iconv_t converter = iconv_open("UTF-16LE", "UTF-8");
  iconv(converter, &from, &left, &to, &room);
  iconv_close(converter);
  Bytes bytes(2 + static_cast<std::size_t>(to - wide.data()));
  bytes[0] = static_cast<std::uint8_t>(bytes.size());
  bytes[1] = kStringDescriptor;
  std::copy(wide.data(), to, bytes.begin() + 2);
  return bytes;
}

}  // namespace

std::vector<Interface> interfacesOf(const Description& device) {
  std::vector<Interface> interfaces = {{kPrinterInterface, 0, kPrinterClass, 1, 1, {bulk(kPrintOut)}}};
  if (device.takesPackets) {
    interfaces.push_back({kPrinterInterface, 1, kPrinterClass, 1, 2, {bulk(kPrintOut), bulk(kPacketsIn)}});
  }
  if (device.scanner != Description::Scanner::None) {
    interfaces.push_back({kScannerInterface,
                          0,
                          kVendorClass,
                          1,
                          static_cast<std::uint8_t>(device.scanner),
                          {bulk(kScanOut), bulk(kScanIn)}});
  }
  if (device.hasPanel) {
    interfaces.push_back({kPanelInterface, 0, kHidClass, 0, 0, {{kReportsIn, kInterrupt, kReportPacket, 4}}});
  }
  return interfaces;
}

std::optional<Bytes> descriptor(const Description& device, std::uint8_t type, std::uint8_t index) {
  const auto the = [index](ByteView bytes) {
    return index == 0 ? std::optional(Bytes(bytes.begin(), bytes.end())) : std::nullopt;
  };
  switch (type) {
    case kDeviceDescriptor:
      return the(kDevice);
    case kConfigurationDescriptor:
      return the(configuration(device));
    case kStringDescriptor:
      if (index == 1) return string("Qvn");
      if (index == 2) return string(device.model);
      if (index == 3) return string(device.serial);
      return the(kLanguages);
    case kHidDescriptor:
      return device.hasPanel ? the(kHid) : std::nullopt;
    case kReportDescriptor:
      return device.hasPanel ? the(kReports) : std::nullopt;
    default:
      return std::nullopt;
  }
}

Bytes deviceId(const Description& device, IdLength order) {
  const std::string text = "MFG:Qvn;MDL:" + device.model + ";CMD:" + (device.takesPackets ? "NPA," : "") +
                           "PJL;CLS:PRINTER;SN:" + device.serial + ";FAM:" + device.family + ";";
  const std::size_t length = 2 + text.size();
  Bytes bytes(length);
  writeLittle16(bytes.data(), length);
  if (order == IdLength::BigEndian) std::swap(bytes[0], bytes[1]);
  std::copy(text.begin(), text.end(), bytes.begin() + 2);
  return bytes;
}

}  // namespace sim::usb
