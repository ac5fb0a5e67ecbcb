// A device's descriptors, as they lie in sysfs: the device descriptor and its only configuration.
#pragma once

#include <cstdint>

#include "usbfs/peer.h"

namespace qvn::test {

class DescriptorBuilder {
 public:
  DescriptorBuilder(std::uint16_t vendor, std::uint16_t product)
      // USB 2.0, classes in the interfaces, 64 bytes a control packet, release 1.00; strings 1 manufacturer,
      // 2 product and 3 serial number.
      : bytes_{18, 1, 0, 2, 0, 0, 0, 64, low(vendor), high(vendor), low(product), high(product), 0, 1, 1, 2,
               3, 1,
               // Configuration 1, self-powered, its length and number of interfaces to come.
               9, 2, 0, 0, 0, 1, 0, 0xC0, 0} {}

  // The endpoints of an interface follow it; an interface's alternate settings follow each other.
  DescriptorBuilder& interface(std::uint8_t number, std::uint8_t alternate, std::uint8_t deviceClass,
                               std::uint8_t subclass, std::uint8_t protocol) {
    if (alternate == 0) ++bytes_[kInterfaces];
    current_ = bytes_.size();
    return add({9, 4, number, alternate, 0, deviceClass, subclass, protocol, 0});
  }
  DescriptorBuilder& bulk(std::uint8_t endpoint) { return addEndpoint(endpoint, 2, 512, 0); }
  DescriptorBuilder& interrupt(std::uint8_t endpoint) { return addEndpoint(endpoint, 3, 64, 4); }

  operator usbfs::Bytes() const { return bytes_; }

 private:
  static constexpr std::size_t kTotalLength = 18 + 2;
  static constexpr std::size_t kInterfaces = 18 + 4;
  static constexpr std::size_t kEndpoints = 4;

  static std::uint8_t low(std::size_t number) { return static_cast<std::uint8_t>(number); }
  static std::uint8_t high(std::size_t number) { return static_cast<std::uint8_t>(number >> 8); }

  DescriptorBuilder& addEndpoint(std::uint8_t address, std::uint8_t type, std::uint16_t packet,
                                 std::uint8_t interval) {
    ++bytes_[current_ + kEndpoints];
    return add({7, 5, address, type, low(packet), high(packet), interval});
  }

  DescriptorBuilder& add(const usbfs::Bytes& descriptor) {
    bytes_.insert(bytes_.end(), descriptor.begin(), descriptor.end());
    const std::size_t total = bytes_.size() - 18;
    bytes_[kTotalLength] = low(total);
    bytes_[kTotalLength + 1] = high(total);
    return *this;
  }

  usbfs::Bytes bytes_;
  std::size_t current_ = 0;
};

}  // namespace qvn::test
