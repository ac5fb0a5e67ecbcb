// ConnectionUse: a connection of a device for the duration of an operation.
#pragma once

#include <string>

#include "device/connected_device.h"
#include "device/connection.h"
#include "qvn/transport/connection_manager.h"

namespace qvn {

// Gets the connection by name and gives it back when the scope ends.
class ConnectionUse {
 public:
  // Throws Win32Exception when the transport gives none.
  ConnectionUse(ConnectedDevice& device, const std::string& connectionName)
      : connection_(device.doGetConnection(connectionName)) {}
  ~ConnectionUse() { connection_.release(); }
  ConnectionUse(const ConnectionUse&) = delete;
  ConnectionUse& operator=(const ConnectionUse&) = delete;

  const Connection& operator*() const { return connection_; }
  const Connection* operator->() const { return &connection_; }

 private:
  const Connection connection_;
};

}  // namespace qvn
