// The connection of a scanner or a HID with the peer that plays the device.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "support/transport/transport_module.h"

namespace qvn::test {

// Open as the library opens it.
class OpenPart : public OpenConnection {
 public:
  OpenPart(TransportModule& module, const std::string& attributes, Listener& listener, Device& device,
           const char* name = "bidi")
      : OpenConnection(module, attributes, name, &device) {
    EXPECT_EQ(openCode(), 0u);
    peer.emplace(listener.accept());
  }
  // Before the peer ends, who would be lost otherwise.
  ~OpenPart() { (*this)->close(); }

  std::optional<Stream> peer;
};

}  // namespace qvn::test
