// What the device says about itself on USB: descriptors (USB 2.0, Printer Class 1.1, HID 1.11) and its IEEE
// 1284 id.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/bytes.h"

namespace sim::usb {

// What the device is.
struct Description {
  std::string family;
  std::string model;
  std::string serial;
  bool takesPackets = false;  // NPA packets, besides print data
  // What its scanner speaks; none without one.
  enum class Scanner : std::uint8_t { None = 0, EscCommands = 1, Blocks = 2 } scanner = Scanner::None;
  bool hasPanel = false;
};

inline constexpr std::uint16_t kVendor = 0x1209;
inline constexpr std::uint16_t kProduct = 0x0001;  // with this vendor: for tests
inline constexpr std::uint16_t kRelease = 0x0100;
inline constexpr std::uint8_t kConfiguration = 1;

inline constexpr std::uint8_t kPrinterInterface = 0;
inline constexpr std::uint8_t kScannerInterface = 1;
inline constexpr std::uint8_t kPanelInterface = 2;

inline constexpr std::uint8_t kPrintOut = 0x01;
inline constexpr std::uint8_t kPacketsIn = 0x81;
inline constexpr std::uint8_t kScanOut = 0x02;
inline constexpr std::uint8_t kScanIn = 0x82;
inline constexpr std::uint8_t kReportsIn = 0x83;
inline constexpr std::uint16_t kReportPacket = 64;

struct Endpoint {
  std::uint8_t address;
  std::uint8_t type;
  std::uint16_t packetSize;
  std::uint8_t interval;
};

// An alternate setting of an interface.
struct Interface {
  std::uint8_t number;
  std::uint8_t alternate;
  std::uint8_t interfaceClass;
  std::uint8_t subclass;
  std::uint8_t protocol;
  std::vector<Endpoint> endpoints;
};

// All alternate settings, by interface.
std::vector<Interface> interfacesOf(const Description& device);

// Descriptor types.
inline constexpr std::uint8_t kDeviceDescriptor = 0x01;
inline constexpr std::uint8_t kConfigurationDescriptor = 0x02;
inline constexpr std::uint8_t kStringDescriptor = 0x03;
inline constexpr std::uint8_t kHidDescriptor = 0x21;
inline constexpr std::uint8_t kReportDescriptor = 0x22;

// Nothing when the device has no such descriptor.
std::optional<Bytes> descriptor(const Description& device, std::uint8_t type, std::uint8_t index);

enum class IdLength : std::uint8_t { BigEndian, LittleEndian };

// The IEEE 1284 device id behind its length, which counts itself; without the text when it is empty.
Bytes deviceId(const Description& device, IdLength order);
inline Bytes emptyDeviceId() { return {0, 2}; }

}  // namespace sim::usb
