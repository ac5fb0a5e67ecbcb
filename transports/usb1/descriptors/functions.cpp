#include "descriptors/functions.h"

#include <algorithm>
#include <iterator>
#include <span>

#include "shared/base/families.h"

namespace qvn::usb1 {
namespace {

enum class Kind : std::uint8_t { Printer, Scanner, Hid, BootHid };

struct InterfaceKind {
  std::uint16_t vendor;  // 0: of any
  std::uint8_t interfaceClass;
  std::uint8_t subclass;
  std::uint8_t protocol;
  Kind kind;
  int rank;            // the highest alternate setting counts
  const char* family;  // of a scanner
};

constexpr std::uint8_t kPrinterClass = LIBUSB_CLASS_PRINTER;
constexpr std::uint8_t kHidClass = LIBUSB_CLASS_HID;
constexpr std::uint8_t kVendorClass = LIBUSB_CLASS_VENDOR_SPEC;
constexpr std::uint8_t kAny = 0xFF;
constexpr std::uint16_t kTestVendor = 0x1209;

constexpr InterfaceKind kKinds[] = {
    {0, kPrinterClass, 1, 2, Kind::Printer, 3, nullptr},  // bidirectional
    {0, kPrinterClass, 1, 1, Kind::Printer, 2, nullptr},  // takes data only
    {0, kPrinterClass, 1, 3, Kind::Printer, 1, nullptr},  // IEEE 1284.4, whose packets nobody here makes
    {0, kHidClass, 0, kAny, Kind::Hid, 1, nullptr},
    {0, kHidClass, 1, kAny, Kind::BootHid, 1, nullptr},  // keyboards and mice
    {kTestVendor, kVendorClass, 1, 1, Kind::Scanner, 1, shared::kCpdScannerFamily},
    {kTestVendor, kVendorClass, 1, 2, Kind::Scanner, 1, shared::kBpdScannerFamily},
};

// Vendors whose HIDs send their reports and events as on a HID port.
constexpr std::uint16_t kFramingVendors[] = {kTestVendor};

const InterfaceKind* kindOf(std::uint16_t vendor, const libusb_interface_descriptor& descriptor) {
  for (const InterfaceKind& kind : kKinds) {
    if ((kind.vendor == 0 || kind.vendor == vendor) && kind.interfaceClass == descriptor.bInterfaceClass &&
        kind.subclass == descriptor.bInterfaceSubClass &&
        (kind.protocol == kAny || kind.protocol == descriptor.bInterfaceProtocol)) {
      return &kind;
    }
  }
  return nullptr;
}

// The first one of that direction and transfer type; bits above the lowest eleven say how many packets a
// frame has.
Pipe findPipe(const libusb_interface_descriptor& descriptor, std::uint8_t direction, std::uint8_t type) {
  constexpr std::uint16_t kPacketSizeMask = 0x07FF;
  for (const auto& endpoint : std::span(descriptor.endpoint, descriptor.bNumEndpoints)) {
    const auto packetSize = static_cast<std::uint16_t>(endpoint.wMaxPacketSize & kPacketSizeMask);
    if ((endpoint.bEndpointAddress & LIBUSB_ENDPOINT_DIR_MASK) == direction &&
        (endpoint.bEndpointAddress & LIBUSB_ENDPOINT_ADDRESS_MASK) != 0 &&
        (endpoint.bmAttributes & LIBUSB_TRANSFER_TYPE_MASK) == type && packetSize != 0) {
      return {endpoint.bEndpointAddress, packetSize};
    }
  }
  return {};
}

Function describe(const libusb_interface_descriptor& descriptor, Kind kind, bool isChosen) {
  const std::uint8_t type = kind == Kind::Hid ? LIBUSB_TRANSFER_TYPE_INTERRUPT : LIBUSB_TRANSFER_TYPE_BULK;
  return {.interface = descriptor.bInterfaceNumber,
          .alternate = descriptor.bAlternateSetting,
          .isChosen = isChosen,
          .out = kind == Kind::Hid ? Pipe() : findPipe(descriptor, LIBUSB_ENDPOINT_OUT, type),
          .in = findPipe(descriptor, LIBUSB_ENDPOINT_IN, type)};
}

bool isComplete(const Function& function, Kind kind) {
  switch (kind) {
    case Kind::Printer:
      return static_cast<bool>(function.out);
    case Kind::Scanner:
      return function.out && function.in;
    case Kind::Hid:
      return static_cast<bool>(function.in);
    default:
      return false;
  }
}

}  // namespace

Functions findFunctions(std::uint16_t vendor, const libusb_config_descriptor& configuration) {
  Functions found;
  bool hasBootHid = false;
  for (const auto& interface : std::span(configuration.interface, configuration.bNumInterfaces)) {
    const InterfaceKind* best = nullptr;
    Function function;
    for (const auto& setting :
         std::span(interface.altsetting, static_cast<std::size_t>(interface.num_altsetting))) {
      const InterfaceKind* const kind = kindOf(vendor, setting);
      if (kind == nullptr) continue;
      if (kind->kind == Kind::BootHid) hasBootHid = true;
      const Function candidate =
          describe(setting, kind->kind, kind->kind == Kind::Scanner || interface.num_altsetting > 1);
      if (!isComplete(candidate, kind->kind) || (best != nullptr && best->rank >= kind->rank)) continue;
      best = kind;
      function = candidate;
    }
    if (best == nullptr) continue;
    if (best->kind == Kind::Printer && !found.printer) found.printer = function;
    if (best->kind == Kind::Scanner && !found.scanner) found.scanner = Scanner{function, best->family};
    if (best->kind == Kind::Hid && !found.hid) found.hid = function;
  }
  if (hasBootHid) found.hid.reset();
  found.framesReports =
      std::find(std::begin(kFramingVendors), std::end(kFramingVendors), vendor) != std::end(kFramingVendors);
  return found;
}

}  // namespace qvn::usb1
