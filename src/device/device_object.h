// DeviceObject: a scanner or a HID as the clients of this process see it.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "qvn/result_codes.h"

namespace qvn {

// Any thread may call it. `Kind` is Scanner or Hid.
template <typename Kind>
class DeviceObject {
 public:
  // `device` may be null when its family could not make one.
  DeviceObject(std::unique_ptr<Kind> device, const std::string& attributes) : device_(std::move(device)) {
    if (device_) device_->setAttributes(attributes);
  }
  DeviceObject(const DeviceObject&) = delete;
  DeviceObject& operator=(const DeviceObject&) = delete;

  bool hasDevice() const { return device_ != nullptr; }
  // What the operations beside open and close are asked of; only when there is one.
  Kind& device() const { return *device_; }
  std::string getAttributes() const { return device_ ? device_->getAttributes() : std::string(); }

  // Opens are counted, not kept apart by client.
  bool isOpenBy(std::uint32_t /*clientId*/) const { return openCount_ > 0; }

  std::uint32_t open(std::uint32_t /*clientId*/) {
    if (!device_) return QRN_ERROR_INVALID_HANDLE;
    const std::uint32_t rc = device_->doOpen();
    if (rc == QRN_ERROR_SUCCESS) ++openCount_;
    return rc;
  }

  // Ends what the device does.
  void shutDown() {
    if (device_) device_->shutDown();
  }

  // `wasOpen` tells whether there was an open to undo. Without a device 6.
  std::uint32_t close(std::uint32_t /*clientId*/, bool& wasOpen) {
    std::uint32_t count = openCount_;
    while (count > 0 && !openCount_.compare_exchange_weak(count, count - 1)) {
    }
    wasOpen = count > 0;
    return device_ ? device_->doClose() : QRN_ERROR_INVALID_HANDLE;
  }

 private:
  const std::unique_ptr<Kind> device_;
  std::atomic<std::uint32_t> openCount_{0};
};

}  // namespace qvn
