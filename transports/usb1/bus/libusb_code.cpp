#include "bus/libusb_code.h"

#include "platform/base/error.h"
#include "qvn/result_codes.h"

namespace qvn::usb1 {

std::uint32_t codeFromError(int error) {
  switch (error) {
    case LIBUSB_SUCCESS:
      return QRN_ERROR_SUCCESS;
    case LIBUSB_ERROR_ACCESS:
      return QRN_ERROR_ACCESS_DENIED;
    case LIBUSB_ERROR_BUSY:
      return QRN_ERROR_BUSY;
    case LIBUSB_ERROR_TIMEOUT:
      return QRN_ERROR_TIMEOUT;
    case LIBUSB_ERROR_NO_MEM:
      return platform::kNotEnoughMemory;
    case LIBUSB_ERROR_PIPE:
      return QRN_ERROR_IO_DEVICE;
    default:
      return QRN_ERROR_DEVICE_NOT_CONNECTED;
  }
}

std::uint32_t codeFromStatus(libusb_transfer_status status) {
  switch (status) {
    case LIBUSB_TRANSFER_COMPLETED:
      return QRN_ERROR_SUCCESS;
    case LIBUSB_TRANSFER_CANCELLED:
      return QRN_ERROR_CONNECTION_ABORTED;
    case LIBUSB_TRANSFER_TIMED_OUT:
      return QRN_ERROR_TIMEOUT;
    case LIBUSB_TRANSFER_STALL:
      return QRN_ERROR_IO_DEVICE;
    case LIBUSB_TRANSFER_OVERFLOW:
      return QRN_ERROR_INVALID_DATA;
    default:
      return QRN_ERROR_NETNAME_DELETED;
  }
}

}  // namespace qvn::usb1
