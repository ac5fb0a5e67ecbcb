// What the interfaces of a device are good for.
#pragma once

#include <libusb.h>

#include <cstdint>
#include <optional>

namespace qvn::usb1 {

struct Pipe {
  std::uint8_t address = 0;  // of the endpoint; 0 when there is none
  std::uint16_t packetSize = 0;

  explicit operator bool() const { return address != 0; }
};

// One interface, in the alternate setting that says the most.
struct Function {
  std::uint8_t interface = 0;
  std::uint8_t alternate = 0;
  bool isChosen =
      false;  // the alternate setting is asked for, with which what is over the interface begins anew
  Pipe out;   // bulk
  Pipe in;    // bulk, or of a HID interrupt
};

struct Scanner : Function {
  const char* family = nullptr;
};

struct Functions {
  std::optional<Function> printer;  // with `in` only where it answers
  std::optional<Scanner> scanner;
  std::optional<Function> hid;
  bool framesReports = false;  // the HID's reports come as on a HID port: with their lengths

  bool areThere() const { return printer || scanner || hid; }
};

// Of a device of that vendor in that configuration, whose descriptors may say anything: an interface counts
// with the endpoints that it must have. Keyboards and mice are the system's: their HID interfaces do not
// count.
Functions findFunctions(std::uint16_t vendor, const libusb_config_descriptor& configuration);

}  // namespace qvn::usb1
