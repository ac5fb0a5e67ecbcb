// The interfaces and endpoints that a device says it has, as libusb hands them on.
#include <libusb.h>

#include <cstdint>
#include <deque>
#include <vector>

#include "fuzz/check.h"
#include "usb1/descriptors/functions.h"

namespace {

// Takes one byte after another; zeros at the end.
class Bytes {
 public:
  Bytes(const std::uint8_t* bytes, std::size_t size) : bytes_(bytes), size_(size) {}
  std::uint8_t take() { return at_ < size_ ? bytes_[at_++] : std::uint8_t{0}; }

 private:
  const std::uint8_t* const bytes_;
  const std::size_t size_;
  std::size_t at_ = 0;
};

bool isOf(const qvn::usb1::Pipe& pipe, std::uint8_t direction) {
  return !pipe || ((pipe.address & LIBUSB_ENDPOINT_DIR_MASK) == direction && pipe.packetSize != 0);
}

bool isSound(const qvn::usb1::Function& function) {
  return isOf(function.out, LIBUSB_ENDPOINT_OUT) && isOf(function.in, LIBUSB_ENDPOINT_IN);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Bytes bytes(data, size);
  std::deque<std::vector<libusb_endpoint_descriptor>> endpoints;
  std::deque<std::vector<libusb_interface_descriptor>> settings;
  std::vector<libusb_interface> interfaces(bytes.take() % 8);
  for (libusb_interface& interface : interfaces) {
    auto& alternates = settings.emplace_back(bytes.take() % 4);
    for (libusb_interface_descriptor& setting : alternates) {
      setting = {};
      setting.bInterfaceNumber = bytes.take();
      setting.bAlternateSetting = bytes.take();
      setting.bInterfaceClass = bytes.take();
      setting.bInterfaceSubClass = bytes.take();
      setting.bInterfaceProtocol = bytes.take();
      auto& ends = endpoints.emplace_back(bytes.take() % 4);
      for (libusb_endpoint_descriptor& end : ends) {
        end = {};
        end.bEndpointAddress = bytes.take();
        end.bmAttributes = bytes.take();
        end.wMaxPacketSize = static_cast<std::uint16_t>(bytes.take() << 8 | bytes.take());
      }
      setting.bNumEndpoints = static_cast<std::uint8_t>(ends.size());
      setting.endpoint = ends.data();
    }
    interface.altsetting = alternates.data();
    interface.num_altsetting = static_cast<int>(alternates.size());
  }
  libusb_config_descriptor configuration{};
  configuration.bNumInterfaces = static_cast<std::uint8_t>(interfaces.size());
  configuration.interface = interfaces.data();
  const qvn::usb1::Functions found = qvn::usb1::findFunctions(0x1209, configuration);
  if (found.printer) QVN_FUZZ_CHECK(found.printer->out && isSound(*found.printer));
  if (found.scanner) {
    QVN_FUZZ_CHECK(found.scanner->out && found.scanner->in && isSound(*found.scanner) &&
                   found.scanner->family != nullptr);
  }
  if (found.hid) QVN_FUZZ_CHECK(found.hid->in && isSound(*found.hid));
  return 0;
}
