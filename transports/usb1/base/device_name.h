// What names a device in its attribute text, wherever it is plugged in.
#pragma once

#include <cstdint>
#include <string>

#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"

namespace qvn::usb1 {

struct DeviceName {
  std::uint16_t vendor = 0;
  std::uint16_t product = 0;
  std::string serial;  // may be empty
  std::string port;
};

// False when the text names no device of this transport.
inline bool deviceNameOf(const std::string& deviceAttributes, DeviceName& name) {
  constexpr std::uint32_t kLargestId = 0xFFFF;
  std::uint32_t vendor = 0;
  std::uint32_t product = 0;
  AttributeCodec::getString(deviceAttributes, attribute::kSerialNumber, name.serial);
  AttributeCodec::getString(deviceAttributes, attribute::kAddress, name.port);
  if (AttributeCodec::getLong(deviceAttributes, attribute::kVid, vendor) != QRN_ERROR_SUCCESS ||
      AttributeCodec::getLong(deviceAttributes, attribute::kPid, product) != QRN_ERROR_SUCCESS ||
      vendor > kLargestId || product > kLargestId || (name.serial.empty() && name.port.empty())) {
    return false;
  }
  name.vendor = static_cast<std::uint16_t>(vendor);
  name.product = static_cast<std::uint16_t>(product);
  return true;
}

}  // namespace qvn::usb1
