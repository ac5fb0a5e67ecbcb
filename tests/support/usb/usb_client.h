// A host's side of USB through libusb, as short as tests want it.
#pragma once

#include <gmock/gmock.h>
#include <libusb.h>

#include <string>
#include <utility>
#include <vector>

#include "support/usb/scripted_device.h"
#include "support/usb/test_device.h"

namespace qvn::test {

// A context of its own.
class UsbClient {
 public:
  UsbClient() { EXPECT_EQ(libusb_init(&context_), 0); }
  ~UsbClient() { libusb_exit(context_); }
  UsbClient(const UsbClient&) = delete;
  UsbClient& operator=(const UsbClient&) = delete;

  libusb_context* context() const { return context_; }
  // "1209:0001 at 1-1", without hubs.
  std::vector<std::string> devices() const {
    std::vector<std::string> all;
    libusb_device** list = nullptr;
    const ssize_t count = libusb_get_device_list(context_, &list);
    for (ssize_t i = 0; i < count; ++i) {
      libusb_device_descriptor descriptor{};
      libusb_get_device_descriptor(list[i], &descriptor);
      if (descriptor.bDeviceClass == LIBUSB_CLASS_HUB) continue;
      std::uint8_t ports[8];
      const int depth = libusb_get_port_numbers(list[i], ports, sizeof ports);
      char text[64];
      std::snprintf(text, sizeof text, "%04x:%04x at %d-%d", descriptor.idVendor, descriptor.idProduct,
                    libusb_get_bus_number(list[i]), depth == 1 ? ports[0] : -1);
      all.emplace_back(text);
    }
    libusb_free_device_list(list, 1);
    return all;
  }

 private:
  libusb_context* context_ = nullptr;
};

// An opening of the test device.
class UsbOpening {
 public:
  explicit UsbOpening(const UsbClient& client)
      : context_(client.context()), handle_(libusb_open_device_with_vid_pid(context_, kVendor, kProduct)) {
    EXPECT_NE(handle_, nullptr);
  }
  ~UsbOpening() {
    if (handle_ != nullptr) libusb_close(handle_);
  }
  UsbOpening(const UsbOpening&) = delete;
  UsbOpening& operator=(const UsbOpening&) = delete;

  operator libusb_device_handle*() const { return handle_; }
  libusb_context* context() const { return context_; }

  // The printer's interface, with its answers.
  void claimBothWays() const {
    EXPECT_EQ(libusb_claim_interface(handle_, 0), 0);
    EXPECT_EQ(libusb_set_interface_alt_setting(handle_, 0, 1), 0);
  }

  struct Done {
    int code;  // of the call, or the status of the transfer
    int count;
    bool operator==(const Done&) const = default;
    friend void PrintTo(const Done& done, std::ostream* out) { *out << done.code << " after " << done.count; }
  };

  Done write(Bytes bytes, unsigned timeout = 10'000) const { return transfer(kOut, bytes, timeout); }
  // What came is in `bytes`, whose size asks for it.
  Done read(Bytes& bytes, unsigned timeout = 10'000) const {
    const Done got = transfer(kIn, bytes, timeout);
    bytes.resize(static_cast<std::size_t>(got.count));
    return got;
  }

 private:
  Done transfer(std::uint8_t endpoint, Bytes& bytes, unsigned timeout) const {
    Done done{};
    done.code = libusb_bulk_transfer(handle_, endpoint, bytes.data(), static_cast<int>(bytes.size()),
                                     &done.count, timeout);
    return done;
  }

  libusb_context* const context_;
  libusb_device_handle* const handle_;
};

// A transfer in flight.
class UsbTransfer {
 public:
  UsbTransfer(const UsbOpening& opening, std::uint8_t endpoint, std::size_t size) : bytes_(size) {
    libusb_fill_bulk_transfer(
        transfer_, opening, endpoint, bytes_.data(), static_cast<int>(size),
        [](libusb_transfer* transfer) { *static_cast<int*>(transfer->user_data) = 1; }, &isDone_, 0);
    EXPECT_EQ(libusb_submit_transfer(transfer_), 0);
    context_ = opening.context();
  }
  ~UsbTransfer() { libusb_free_transfer(transfer_); }
  UsbTransfer(const UsbTransfer&) = delete;
  UsbTransfer& operator=(const UsbTransfer&) = delete;

  void cancel() { EXPECT_EQ(libusb_cancel_transfer(transfer_), 0); }
  UsbOpening::Done wait() {
    while (isDone_ == 0) libusb_handle_events_completed(context_, &isDone_);
    return {transfer_->status, transfer_->actual_length};
  }

 private:
  libusb_transfer* const transfer_ = libusb_alloc_transfer(0);
  libusb_context* context_ = nullptr;
  Bytes bytes_;
  int isDone_ = 0;
};

// Hears what is plugged in and unplugged, but for hubs.
class UsbHotplug {
 public:
  explicit UsbHotplug(const UsbClient& client) : context_(client.context()) {
    const auto hear = [](libusb_context*, libusb_device* device, libusb_hotplug_event event, void* self) {
      libusb_device_descriptor descriptor{};
      libusb_get_device_descriptor(device, &descriptor);
      if (descriptor.bDeviceClass != LIBUSB_CLASS_HUB) {
        static_cast<UsbHotplug*>(self)->heard_.emplace_back(
            event == LIBUSB_HOTPLUG_EVENT_DEVICE_ARRIVED ? "arrived" : "left");
      }
      return 0;
    };
    EXPECT_EQ(libusb_hotplug_register_callback(
                  context_, LIBUSB_HOTPLUG_EVENT_DEVICE_ARRIVED | LIBUSB_HOTPLUG_EVENT_DEVICE_LEFT,
                  LIBUSB_HOTPLUG_ENUMERATE, LIBUSB_HOTPLUG_MATCH_ANY, LIBUSB_HOTPLUG_MATCH_ANY,
                  LIBUSB_HOTPLUG_MATCH_ANY, hear, this, &callback_),
              0);
  }
  ~UsbHotplug() { libusb_hotplug_deregister_callback(context_, callback_); }
  UsbHotplug(const UsbHotplug&) = delete;
  UsbHotplug& operator=(const UsbHotplug&) = delete;

  // What was heard since the last time: so many, or what has come within ten seconds.
  std::vector<std::string> take(std::size_t count) {
    for (int i = 0; i < 100 && heard_.size() < count; ++i) {
      timeval moment{0, 100'000};
      libusb_handle_events_timeout(context_, &moment);
    }
    return std::exchange(heard_, {});
  }

 private:
  libusb_context* const context_;
  libusb_hotplug_callback_handle callback_ = 0;
  std::vector<std::string> heard_;
};

}  // namespace qvn::test
