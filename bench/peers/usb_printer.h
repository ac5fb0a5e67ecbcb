// A printer on the USB bed that takes all print data at once and answers a request with a reply.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "support/usb/scripted_device.h"

namespace qvn::bench {

class UsbPrinter : public test::ScriptedDevice {
 public:
  explicit UsbPrinter(const std::string& serial);

  static constexpr std::uint16_t kVendor = 0x1209;
  static constexpr std::uint16_t kProduct = 0x0001;
  static constexpr std::uint8_t kInterface = 0;
  static constexpr std::uint8_t kBothWays = 1;  // the interface's alternate setting with an IN endpoint
  static constexpr std::uint8_t kOut = 0x01;
  static constexpr std::uint8_t kIn = 0x81;

  // The NPA packet that it answers, and what with.
  static constexpr std::array<std::uint8_t, 6> kRequest = {0xA5, 0x00, 0x03, 0x50, 0x01, 0x00};
  static constexpr std::array<std::uint8_t, 8> kReply = {0xA5, 0x00, 0x05, 0x50, 0x01, 0x00, 0x00, 0x2A};
};

}  // namespace qvn::bench
