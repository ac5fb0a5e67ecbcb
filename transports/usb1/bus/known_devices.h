// The devices on the bus that this transport can make something of.
#pragma once

#include <libusb.h>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "base/device_name.h"
#include "bus/known_device.h"
#include "bus/usb_bus.h"

namespace qvn::usb1 {

// A device is asked once for what it says of itself, and again when it was unplugged meanwhile: as soon as
// the system tells that, it is forgotten.
class KnownDevices {
 public:
  explicit KnownDevices(UsbBus& bus) : bus_(bus) {}
  ~KnownDevices();

  // Before all others, once the bus has started.
  void start();

  using Devices = std::vector<std::shared_ptr<const KnownDevice>>;

  // Those that are plugged in, by their ports. A device that was not known is waited for 200 ms at most; what
  // it has not said by then is missing, and asked for again the next time. 0; 5 when there is one that this
  // user may not open. Any thread.
  std::uint32_t list(Devices& devices);

  // The one with that vendor, product and serial number; of several that one at the port. Where there is no
  // serial number, the one at the port. 0, 1167 or 5.
  std::uint32_t find(const DeviceName& name, std::shared_ptr<const KnownDevice>& device);

 private:
  static int LIBUSB_CALL onLeft(libusb_context*, libusb_device* device, libusb_hotplug_event, void* self);
  std::shared_ptr<const KnownDevice> known(libusb_device* device);
  std::uint32_t learn(libusb_device* device, std::shared_ptr<const KnownDevice>& known);

  UsbBus& bus_;
  libusb_hotplug_callback_handle callback_ = 0;
  bool isTold_ = false;

  std::mutex mutex_;
  std::map<libusb_device*, std::shared_ptr<const KnownDevice>> known_;
};

}  // namespace qvn::usb1
