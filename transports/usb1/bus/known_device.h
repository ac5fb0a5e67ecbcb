// A device on the bus of which this transport can make something, and what it says of itself.
#pragma once

#include <libusb.h>

#include <cstdint>
#include <memory>
#include <string>

#include "descriptors/device_id.h"
#include "descriptors/functions.h"

namespace qvn::usb1 {

struct DeviceUnreference {
  void operator()(libusb_device* device) const { libusb_unref_device(device); }
};

// Texts are such as may stand in an attribute text; what the device does not say is empty.
struct KnownDevice {
  std::unique_ptr<libusb_device, DeviceUnreference> device;
  std::uint16_t vendor = 0;
  std::uint16_t product = 0;
  std::uint8_t configuration = 0;  // the value of the active one
  std::string port;                // "1-4.2": where it is plugged in, by the bus and the ports on the way
  std::string node;                // "/dev/bus/usb/001/005"
  std::string serial;
  std::string productName;
  Functions functions;
  DeviceId id;             // of a printer
  bool isComplete = true;  // it has answered in time

  // Where the system tells of it and of one of its interfaces, which lies in the same folder.
  std::string sysfs() const { return "/sys/bus/usb/devices/" + port; }
  std::string interfaceSuffix(const Function& function) const {
    return ':' + std::to_string(configuration) + '.' + std::to_string(function.interface);
  }
};

}  // namespace qvn::usb1
