// Where the devices of this transport are: on the bus, each part behind an interface.
#pragma once

#include <memory>
#include <string>

#include "bus/known_devices.h"
#include "bus/usb_interface.h"
#include "shared/channel/place.h"

namespace qvn::usb1 {

// "Vid", "Pid" and "SerialNumber" of the attribute text name the device, wherever it is plugged in; its
// "Address" does where it has no serial number. The "Device" tells the part. "NpaWrapping" is 1 for a printer
// that takes NPA packets among its print data.
class UsbPlaces : public shared::DevicePlaces {
 public:
  UsbPlaces(KnownDevices& devices, UsbInterfaces& interfaces) : devices_(devices), interfaces_(interfaces) {}

  std::shared_ptr<const shared::Place> printPlace(const std::string& deviceAttributes) const override;
  std::shared_ptr<const shared::Place> talkPlace(const std::string& deviceAttributes) const override;
  bool isPlain(const std::string& deviceAttributes) const override;
  bool isPlaced(const std::string& deviceAttributes) const override;

 private:
  KnownDevices& devices_;
  UsbInterfaces& interfaces_;
};

}  // namespace qvn::usb1
