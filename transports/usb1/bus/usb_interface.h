// Interfaces of devices that this process has claimed.
#pragma once

#include <libusb.h>

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <span>
#include <string>

#include "bus/known_device.h"
#include "bus/open_device.h"
#include "bus/out_pipe.h"
#include "bus/transfer.h"
#include "bus/usb_bus.h"
#include "descriptors/functions.h"

namespace qvn::usb1 {

// One interface, claimed until this ends. A device that was unplugged stays so: what comes back is another
// one.
class UsbInterface {
 public:
  UsbInterface(UsbBus& bus, const Function& function) : bus_(bus), function_(function) {}
  UsbInterface(const UsbInterface&) = delete;
  UsbInterface& operator=(const UsbInterface&) = delete;
  // Nothing flies any more. A driver of the system that had the interface gets it back.
  ~UsbInterface();

  // Before all others: 0; 1167 when the device is gone, 5 when this user may not open it, 170 when somebody
  // has it.
  std::uint32_t claim(const KnownDevice& device);

  UsbBus& bus() const { return bus_; }
  libusb_device_handle* device() const { return device_.get(); }
  const Function& function() const { return function_; }
  OutPipe& outPipe() { return outPipe_; }

  // A channel over it begins, and has ended. The first of several chooses the alternate setting, with which
  // the device begins anew: what it had still to say to an earlier one does not come any more. 0, or why it
  // cannot.
  std::uint32_t enter();
  void leave();

  // A request to the interface.
  Transfer::Result control(const Setup& setup, std::span<std::uint8_t> answer);

 private:
  std::uint32_t claimNow(const KnownDevice& device);

  UsbBus& bus_;
  const Function function_;
  OpenDevice device_;
  bool isClaimed_ = false;
  OutPipe outPipe_;

  std::mutex mutex_;
  int channels_ = 0;
};

// The interfaces in use, each claimed once however many channels there are over it.
class UsbInterfaces {
 private:
  struct Slot;

 public:
  explicit UsbInterfaces(UsbBus& bus) : bus_(bus) {}

  // A use of an interface; the last one releases it.
  class Use {
   public:
    Use() = default;
    Use(Use&& other) noexcept : slot_(std::move(other.slot_)), interface_(std::move(other.interface_)) {}
    Use& operator=(Use&& other) noexcept {
      std::swap(slot_, other.slot_);
      std::swap(interface_, other.interface_);
      return *this;
    }
    ~Use();

    UsbInterface* operator->() const { return interface_.get(); }
    UsbInterface& operator*() const { return *interface_; }

   private:
    friend class UsbInterfaces;
    std::shared_ptr<Slot> slot_;
    std::shared_ptr<UsbInterface> interface_;
  };

  // 0, or why it cannot be claimed. Any thread.
  std::uint32_t use(const KnownDevice& device, const Function& function, Use& use);

 private:
  // Held while the interface is claimed or released.
  struct Slot {
    std::mutex mutex;
    libusb_device* device = nullptr;  // of the interface, which keeps it
    std::shared_ptr<UsbInterface> interface;
  };

  UsbBus& bus_;
  std::mutex mutex_;
  std::map<std::pair<std::string, std::uint8_t>, std::shared_ptr<Slot>> slots_;
};

}  // namespace qvn::usb1
