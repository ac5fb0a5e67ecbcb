// Passes on to a port the packets that an endpoint has taken. An endpoint takes whole packets, a port any
// number of bytes.
#pragma once

#include <cstddef>
#include <optional>
#include <utility>

#include "base/bytes.h"
#include "usb/port_link.h"

namespace sim::usb {

class PortFeed {
 public:
  explicit PortFeed(PortLink& link) : link_(link) {}

  // How many of the bytes were taken: as many packets as the port takes now. Nothing at all when it has ended
  // the connection; then a new one may be tried.
  std::optional<std::size_t> take(ByteView packets);
  // Takes the bytes in any case.
  void add(Bytes bytes) { rest_ = std::move(bytes); }

  // Passes on what was taken; whether nothing is left then. Nothing at all when the port has ended the
  // connection.
  std::optional<bool> flush();
  void discard() { rest_.clear(); }
  // Ends the connection behind what was taken.
  void finish() { link_.closeBehind(std::exchange(rest_, {})); }
  bool isEmpty() const { return rest_.empty(); }

 private:
  PortLink& link_;
  Bytes rest_;
};

}  // namespace sim::usb
