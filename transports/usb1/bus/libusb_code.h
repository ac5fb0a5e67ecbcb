// Result codes for what libusb says.
#pragma once

#include <libusb.h>

#include <cstdint>

namespace qvn::usb1 {

// Of a call that opens or claims; 0 for success. A device that is gone is not connected (1167).
std::uint32_t codeFromError(int error);

// Of a transfer that has ended. A device that is gone has ended the connection (64), and so has one that
// fails in the middle of a transfer: the system finds out only later that it was unplugged.
std::uint32_t codeFromStatus(libusb_transfer_status status);

}  // namespace qvn::usb1
