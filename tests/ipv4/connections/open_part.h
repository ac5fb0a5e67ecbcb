// The connection of a scanner or a HID with the peer that plays the device.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "ipv4/transport_module.h"

namespace qvn::test {

// Open as the library opens it.
class OpenPart {
 public:
  OpenPart(TransportModule& module, const std::string& attributes, Listener& listener, Device& device,
           const char* name = "bidi")
      : module_(module), connection_(module.connections.getConnection(attributes, name)) {
    connection_->setChild(0, &device);
    EXPECT_EQ(connection_->open(), 0u);
    peer.emplace(listener.accept());
  }
  ~OpenPart() {
    connection_->close();
    connection_->setChild(0, nullptr);
    module_.connections.releaseConnection(connection_);
  }
  Connectable* operator->() const { return connection_; }
  Connectable& operator*() const { return *connection_; }

  std::optional<Stream> peer;

 private:
  TransportModule& module_;
  Connectable* const connection_;
};

}  // namespace qvn::test
