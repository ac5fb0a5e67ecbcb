#include "bus/usb_interface.h"

#include <chrono>
#include <string>
#include <utility>

#include "base/transport_identity.h"
#include "base/usb_settings.h"
#include "bus/kernel_driver.h"
#include "bus/known_device.h"
#include "bus/libusb_code.h"
#include "platform/base/unique_descriptor.h"
#include "qvn/result_codes.h"
#include "qvn/transport/log.h"

namespace qvn::usb1 {
namespace {

// What a device takes for a request that it answers from memory.
constexpr std::chrono::milliseconds kControlTimeout{1000};

void log(const std::string& text) { transportLog(kLogComponent, log_level::kError, text); }

}  // namespace

UsbInterface::~UsbInterface() {
  if (isClaimed_) libusb_release_interface(device(), function_.interface);
}

std::uint32_t UsbInterface::claim(const KnownDevice& device) {
  const std::uint32_t rc = claimNow(device);
  if (isTransportLogged(kLogComponent, log_level::kDetail)) {
    transportLog(kLogComponent, log_level::kDetail,
                 "claim " + device.node + " interface " + std::to_string(function_.interface) +
                     " rc=" + std::to_string(rc));
  }
  return rc;
}

std::uint32_t UsbInterface::claimNow(const KnownDevice& device) {
  if (const std::uint32_t rc = openDevice(device, kLogComponent, device_); rc != QRN_ERROR_SUCCESS) return rc;
  const int number = function_.interface;
  platform::UniqueDescriptor held;  // until it is ours
  if (libusb_kernel_driver_active(device_.get(), number) == 1) {
    if (!mayDetachKernelDriver()) {
      log(device.node + " has a driver of the system, and Usb1DetachKernelDriver is 0");
      return QRN_ERROR_BUSY;
    }
    if (isInUse(device.sysfs() + device.interfaceSuffix(function_), held)) {
      log(device.node + " is in use through a driver of the system");
      return QRN_ERROR_BUSY;
    }
    libusb_set_auto_detach_kernel_driver(device_.get(), 1);
  }
  if (const int error = libusb_claim_interface(device_.get(), number); error != LIBUSB_SUCCESS) {
    if (error == LIBUSB_ERROR_BUSY) log(device.node + " is in use by another program");
    return codeFromError(error);
  }
  isClaimed_ = true;
  return QRN_ERROR_SUCCESS;
}

std::uint32_t UsbInterface::enter() {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (channels_ == 0 && function_.isChosen) {
    const int error =
        libusb_set_interface_alt_setting(device_.get(), function_.interface, function_.alternate);
    if (error != LIBUSB_SUCCESS) return codeFromError(error);
    outPipe_.beginAnew();
  }
  ++channels_;
  return QRN_ERROR_SUCCESS;
}

void UsbInterface::leave() {
  const std::lock_guard<std::mutex> lock(mutex_);
  --channels_;
}

Transfer::Result UsbInterface::control(const Setup& setup, std::span<std::uint8_t> answer) {
  return Transfer(bus_).control(device_.get(), setup, answer, UsbBus::Clock::now() + kControlTimeout);
}

std::uint32_t UsbInterfaces::use(const KnownDevice& device, const Function& function, Use& use) {
  std::shared_ptr<Slot> slot;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    std::shared_ptr<Slot>& known = slots_[{device.node, function.interface}];
    if (known == nullptr) known = std::make_shared<Slot>();
    slot = known;
  }
  const std::lock_guard<std::mutex> lock(slot->mutex);
  if (slot->interface == nullptr || slot->device != device.device.get()) {
    auto interface = std::make_shared<UsbInterface>(bus_, function);
    if (const std::uint32_t rc = interface->claim(device); rc != QRN_ERROR_SUCCESS) return rc;
    slot->interface = std::move(interface);
    slot->device = device.device.get();
  }
  use.slot_ = slot;
  use.interface_ = slot->interface;
  return QRN_ERROR_SUCCESS;
}

UsbInterfaces::Use::~Use() {
  if (interface_ == nullptr) return;
  const std::lock_guard<std::mutex> lock(slot_->mutex);
  const bool isCurrent = slot_->interface == interface_;
  interface_.reset();
  if (isCurrent && slot_->interface.use_count() == 1) slot_->interface.reset();
}

}  // namespace qvn::usb1
