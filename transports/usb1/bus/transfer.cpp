#include "bus/transfer.h"

#include <algorithm>
#include <array>
#include <new>
#include <vector>

#include "bus/libusb_code.h"
#include "qvn/result_codes.h"

namespace qvn::usb1 {

Transfer::Transfer(UsbBus& bus) : bus_(bus), transfer_(libusb_alloc_transfer(0)) {
  if (transfer_ == nullptr) throw std::bad_alloc();
}

Transfer::Result Transfer::send(libusb_device_handle* device, std::uint8_t endpoint,
                                std::span<const std::uint8_t> bytes, UsbBus::Clock::time_point deadline) {
  // Of an OUT transfer libusb only reads.
  libusb_fill_bulk_transfer(transfer_.get(), device, endpoint, const_cast<std::uint8_t*>(bytes.data()),
                            static_cast<int>(bytes.size()), onEnd, this, 0);
  return run(deadline);
}

Transfer::Result Transfer::control(libusb_device_handle* device, const Setup& setup,
                                   std::span<std::uint8_t> answer, UsbBus::Clock::time_point deadline) {
  std::vector<std::uint8_t> buffer(LIBUSB_CONTROL_SETUP_SIZE + answer.size());
  libusb_fill_control_setup(buffer.data(), setup.type, setup.request, setup.value, setup.index,
                            static_cast<std::uint16_t>(answer.size()));
  libusb_fill_control_transfer(transfer_.get(), device, buffer.data(), onEnd, this, 0);
  const Result result = run(deadline);
  const auto came =
      std::span(buffer).subspan(LIBUSB_CONTROL_SETUP_SIZE).first(std::min(result.count, answer.size()));
  if ((setup.type & LIBUSB_ENDPOINT_IN) != 0) std::copy(came.begin(), came.end(), answer.begin());
  return {result.code, came.size()};
}

Transfer::Result Transfer::run(UsbBus::Clock::time_point deadline) {
  done_ = 0;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (cancelled_) return {QRN_ERROR_CONNECTION_ABORTED, 0};
    if (const int error = libusb_submit_transfer(transfer_.get()); error != LIBUSB_SUCCESS) {
      const std::uint32_t code = codeFromError(error);
      return {code == QRN_ERROR_DEVICE_NOT_CONNECTED ? std::uint32_t{QRN_ERROR_NETNAME_DELETED} : code, 0};
    }
    flies_ = true;
  }
  bus_.waitFor(done_, deadline);
  bool isLate = false;
  if (!UsbBus::isFinished(done_)) {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      isLate = flies_ && !cancelled_;
      if (flies_) libusb_cancel_transfer(transfer_.get());
    }
    // The system gives every transfer back, also of a device that is gone.
    bus_.waitFor(done_);
  }
  const auto count = static_cast<std::size_t>(std::max(transfer_->actual_length, 0));
  const bool isCancelled = transfer_->status == LIBUSB_TRANSFER_CANCELLED;
  return {isCancelled && isLate ? std::uint32_t{QRN_ERROR_TIMEOUT} : codeFromStatus(transfer_->status),
          count};
}

void Transfer::cancel() {
  const std::lock_guard<std::mutex> lock(mutex_);
  cancelled_ = true;
  if (flies_) libusb_cancel_transfer(transfer_.get());
}

void Transfer::onEnd(libusb_transfer* transfer) {
  auto& self = *static_cast<Transfer*>(transfer->user_data);
  {
    const std::lock_guard<std::mutex> lock(self.mutex_);
    self.flies_ = false;
  }
  UsbBus::finish(self.done_);
}

}  // namespace qvn::usb1
