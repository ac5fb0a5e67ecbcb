// Cuts the byte stream of a USB/IP connection into questions and, once the device is imported, commands with
// their data.
#pragma once

#include <optional>

#include "base/bytes.h"
#include "base/stream_assembler.h"
#include "usb/usbip_messages.h"

namespace sim::usb {

class UsbipAssembler : public StreamAssembler {
 public:
  // The next message. One that is none comes alone, and nothing of use after it: where the next one begins
  // cannot be known.
  std::optional<Bytes> next() {
    const std::size_t header = hasImported ? usbip::kCommandLength : usbip::kQuestionHeader;
    if (pending_.size() < header) return std::nullopt;
    return take(hasImported ? usbip::commandLength(pending_) : usbip::questionLength(pending_));
  }

  // The rest of a message may take as long as it likes.
  bool isPartial() const { return false; }

  bool hasImported = false;
};

}  // namespace sim::usb
