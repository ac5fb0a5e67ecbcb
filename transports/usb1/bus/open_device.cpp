#include "bus/open_device.h"

#include "bus/libusb_code.h"
#include "qvn/transport/log.h"

namespace qvn::usb1 {

std::uint32_t openDevice(const KnownDevice& device, const char* logComponent, OpenDevice& opened) {
  libusb_device_handle* handle = nullptr;
  const int error = libusb_open(device.device.get(), &handle);
  if (error == LIBUSB_SUCCESS) opened.reset(handle);
  if (error == LIBUSB_ERROR_ACCESS) {
    transportLog(logComponent, log_level::kError,
                 device.node +
                     ": no permission; the udev rule 70-qvn-usb.rules of the package qvn-usb gives it to the "
                     "group lp");
  }
  return codeFromError(error);
}

}  // namespace qvn::usb1
