// A device that is open, and how one is opened.
#pragma once

#include <libusb.h>

#include <cstdint>
#include <memory>

#include "bus/known_device.h"

namespace qvn::usb1 {

struct CloseDevice {
  void operator()(libusb_device_handle* device) const { libusb_close(device); }
};
using OpenDevice = std::unique_ptr<libusb_device_handle, CloseDevice>;

// 0; 5 when this user may not, which the component's log explains; 1167 when it is gone.
std::uint32_t openDevice(const KnownDevice& device, const char* logComponent, OpenDevice& opened);

}  // namespace qvn::usb1
