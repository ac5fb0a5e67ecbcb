// One transfer after another, each waited for.
#pragma once

#include <libusb.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>

#include "bus/usb_bus.h"

namespace qvn::usb1 {

// A control request, as the bytes in front of one say it.
namespace request_type {
inline constexpr std::uint8_t kStandardIn = 0x80;
inline constexpr std::uint8_t kInterfaceClassIn = 0xA1;
inline constexpr std::uint8_t kInterfaceClassOut = 0x21;
}  // namespace request_type

struct Setup {
  std::uint8_t type;  // direction, kind and recipient
  std::uint8_t request;
  std::uint16_t value;
  std::uint16_t index;
};

class Transfer {
 public:
  // 0, or why it did not go all the way: 1460 when the deadline came first, 1117 for a stall, 64 when the
  // device is gone, 1236 after a cancel. The count is exact whatever the code.
  struct Result {
    std::uint32_t code;
    std::size_t count;
  };

  explicit Transfer(UsbBus& bus);
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;

  // Each returns when the transfer has come back, so that nothing of it flies any more. One thread at a time.
  Result send(libusb_device_handle* device, std::uint8_t endpoint, std::span<const std::uint8_t> bytes,
              UsbBus::Clock::time_point deadline);
  Result control(libusb_device_handle* device, const Setup& setup, std::span<std::uint8_t> answer,
                 UsbBus::Clock::time_point deadline);

  // Ends the one that flies and all that come later. Any thread.
  void cancel();

 private:
  static void LIBUSB_CALL onEnd(libusb_transfer* transfer);
  Result run(UsbBus::Clock::time_point deadline);

  struct Freed {
    void operator()(libusb_transfer* transfer) const { libusb_free_transfer(transfer); }
  };

  UsbBus& bus_;
  const std::unique_ptr<libusb_transfer, Freed> transfer_;
  int done_ = 0;

  std::mutex mutex_;  // guards what follows
  bool flies_ = false;
  bool cancelled_ = false;
};

}  // namespace qvn::usb1
