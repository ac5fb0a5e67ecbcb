// The interfaces that a device's descriptors name, and which endpoints each has at present.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "usbfs/peer.h"

namespace qvn::usbfs {

class Layout {
 public:
  // Of the device descriptor with the configurations behind it; the first one is in force.
  explicit Layout(const Bytes& descriptors);

  std::uint8_t configuration() const { return configuration_; }
  bool hasInterface(unsigned number) const { return current_.count(number) != 0; }
  const std::map<unsigned, unsigned>& currentAlternates() const { return current_; }
  bool hasAlternate(unsigned number, unsigned alternate) const { return find(number, alternate) != nullptr; }
  bool isPrinter(unsigned number, unsigned alternate) const;
  void select(unsigned number, unsigned alternate) { current_[number] = alternate; }
  // The interface that the endpoint is of now, or -1.
  int interfaceOf(std::uint8_t endpoint) const;

 private:
  struct Alternate {
    unsigned interface;
    unsigned number;
    std::uint8_t deviceClass;
    std::vector<std::uint8_t> endpoints;
  };

  const Alternate* find(unsigned number, unsigned alternate) const;

  std::uint8_t configuration_ = 0;
  std::vector<Alternate> alternates_;
  std::map<unsigned, unsigned> current_;
};

}  // namespace qvn::usbfs
