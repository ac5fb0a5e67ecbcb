// KeptConnection: a connection that is kept beyond the operation that got it, for as long as this object
// lives.
#pragma once

#include <utility>

#include "device/connected_device.h"
#include "device/connection.h"

namespace qvn {

class KeptConnection {
 public:
  KeptConnection() = default;
  KeptConnection(ConnectedDevice& device, const Connection& connection)
      : device_(&device), connection_(connection) {
    device.doPersistConnection(connection, true);
  }
  ~KeptConnection() { end(); }
  KeptConnection(KeptConnection&& other) noexcept
      : device_(other.device_), connection_(std::exchange(other.connection_, {})) {}
  KeptConnection& operator=(KeptConnection&& other) noexcept {
    end();
    device_ = other.device_;
    connection_ = std::exchange(other.connection_, {});
    return *this;
  }

  // `isInUse`: whoever calls gives the connection back after that. Otherwise it is given back once more, so
  // that its manager has the occasion to drop it.
  void end(bool isInUse = false) noexcept;

 private:
  ConnectedDevice* device_ = nullptr;
  Connection connection_;
};

}  // namespace qvn
