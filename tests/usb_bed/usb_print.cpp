// A program of its own for the bed: writes the device id of the test device's printer, then prints its
// standard input, then waits in a read until the device ends it. Exits with libusb's error number.
#include <libusb.h>

#include <array>
#include <cstdint>
#include <iostream>
#include <iterator>
#include <string>

#include "support/usb/test_device.h"

namespace {

int print(libusb_device_handle* device) {
  std::array<std::uint8_t, 1024> id{};
  constexpr unsigned kTimeout = 10'000;
  const int length = libusb_control_transfer(device, 0xA1, 0, 0, 0, id.data(), id.size(), kTimeout);
  if (length < 2) return length;
  std::cout << std::string(id.begin() + 2, id.begin() + length) << std::endl;

  int error = libusb_claim_interface(device, 0);
  if (error == 0) error = libusb_set_interface_alt_setting(device, 0, 1);
  if (error != 0) return error;
  std::string data(std::istreambuf_iterator<char>(std::cin), {});
  int sent = 0;
  error = libusb_bulk_transfer(device, qvn::test::kOut, reinterpret_cast<std::uint8_t*>(data.data()),
                               static_cast<int>(data.size()), &sent, kTimeout);
  std::cout << "sent " << sent << std::endl;
  int got = 0;
  return error != 0 ? error : libusb_bulk_transfer(device, qvn::test::kIn, id.data(), 512, &got, 0);
}

}  // namespace

int main() {
  libusb_context* context = nullptr;
  if (libusb_init(&context) != 0) return 1;
  libusb_device_handle* device =
      libusb_open_device_with_vid_pid(context, qvn::test::kVendor, qvn::test::kProduct);
  const int error = device == nullptr ? LIBUSB_ERROR_NO_DEVICE : print(device);
  if (device != nullptr) libusb_close(device);
  libusb_exit(context);
  return -error;
}
