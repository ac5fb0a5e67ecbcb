// Finds the devices that are plugged in.
#pragma once

#include <cstdint>
#include <string>

#include "bus/known_devices.h"
#include "qvn/transport/discoverer.h"

namespace qvn::usb1 {

// A device is known by vendor, product and serial number: it keeps its handle wherever it is plugged in. One
// without a serial number is known by its port, and so is the second one of two that have the same. Its
// scanner and its HID are told after its printer, as devices of their own.
class UsbDiscoverer : public Discoverer {
 public:
  explicit UsbDiscoverer(KnownDevices& devices) : devices_(devices) {}

  // The options must be empty, else 87. 0, 5 when there is a device that this user may not open, or the
  // registry's code; the others are told all the same.
  std::uint32_t discover(const std::string& options) override;

  // Tells the device again where it is plugged in now: 0, 87 when the text names none, 1167 when it is not
  // there.
  std::uint32_t discoverSpecific(const std::string& deviceAttributes) override;

 private:
  std::uint32_t tell(const KnownDevice& device, bool hasTwin);

  KnownDevices& devices_;
};

}  // namespace qvn::usb1
