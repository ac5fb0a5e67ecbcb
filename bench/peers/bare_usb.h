// A printer on USB through libusb alone: transfers that are submitted, and events that are handled until they
// have come back.
#pragma once

#include <libusb.h>

#include <cstdint>
#include <memory>
#include <span>

namespace qvn::bench {

class BareUsb {
 public:
  // Has the UsbPrinter that is plugged into this port of the root hub. Throws std::runtime_error, as all its
  // functions, when it cannot.
  explicit BareUsb(std::uint8_t port);
  BareUsb(const BareUsb&) = delete;
  BareUsb& operator=(const BareUsb&) = delete;

  // One transfer out. The bytes are only read.
  void write(std::span<const std::uint8_t> bytes);
  // The request goes out and the printer's reply comes in, both in flight at once. Room for a packet of the
  // bus is needed.
  void exchange(std::span<const std::uint8_t> request, std::span<std::uint8_t> reply);

 private:
  struct End {
    void operator()(libusb_context* context) const { libusb_exit(context); }
    void operator()(libusb_device_handle* device) const { libusb_close(device); }
    void operator()(libusb_transfer* transfer) const { libusb_free_transfer(transfer); }
  };
  struct Flight {
    std::unique_ptr<libusb_transfer, End> transfer{libusb_alloc_transfer(0)};
    int isOver = 0;
  };

  void submit(Flight& flight, std::uint8_t endpoint, const std::uint8_t* bytes, std::size_t size);
  void wait(Flight& flight, std::size_t size);

  std::unique_ptr<libusb_context, End> context_;
  std::unique_ptr<libusb_device_handle, End> device_;
  Flight out_;
  Flight in_;
};

}  // namespace qvn::bench
