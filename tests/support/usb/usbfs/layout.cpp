#include "usbfs/layout.h"

#include <linux/usb/ch9.h>
#include <algorithm>

namespace qvn::usbfs {

Layout::Layout(const Bytes& descriptors) {
  for (std::size_t at = 0; at + 2 <= descriptors.size();) {
    const std::size_t length = descriptors[at];
    if (length < 2 || at + length > descriptors.size()) return;
    const std::uint8_t* descriptor = &descriptors[at];
    at += length;
    if (descriptor[1] == USB_DT_CONFIG && length >= USB_DT_CONFIG_SIZE) {
      if (configuration_ != 0) return;
      configuration_ = descriptor[5];
    } else if (descriptor[1] == USB_DT_INTERFACE && length >= USB_DT_INTERFACE_SIZE) {
      alternates_.push_back({descriptor[2], descriptor[3], descriptor[5], {}});
      current_[descriptor[2]] = 0;
    } else if (descriptor[1] == USB_DT_ENDPOINT && length >= USB_DT_ENDPOINT_SIZE && !alternates_.empty()) {
      alternates_.back().endpoints.push_back(descriptor[2]);
    }
  }
}

const Layout::Alternate* Layout::find(unsigned number, unsigned alternate) const {
  for (const Alternate& candidate : alternates_) {
    if (candidate.interface == number && candidate.number == alternate) return &candidate;
  }
  return nullptr;
}

bool Layout::isPrinter(unsigned number, unsigned alternate) const {
  const Alternate* found = find(number, alternate);
  return found != nullptr && found->deviceClass == USB_CLASS_PRINTER;
}

int Layout::interfaceOf(std::uint8_t endpoint) const {
  for (const auto& [interface, alternate] : current_) {
    const Alternate* found = find(interface, alternate);
    if (found == nullptr) continue;
    const auto& endpoints = found->endpoints;
    if (std::find(endpoints.begin(), endpoints.end(), endpoint) != endpoints.end())
      return static_cast<int>(interface);
  }
  return -1;
}

}  // namespace qvn::usbfs
