// ConnectionUse: a connection of a device for the duration of an operation.
#pragma once

#include <string>

#include "device/connected_device.h"
#include "qvn/transport/connection_manager.h"

namespace qvn {

// Gets the connection by name and gives it back when the scope ends.
class ConnectionUse {
 public:
  ConnectionUse(ConnectedDevice& device, const std::string& connectionName)
      : device_(device), connection_(device.doGetConnection(connectionName)) {}
  ~ConnectionUse() { device_.doReleaseConnection(connection_); }
  ConnectionUse(const ConnectionUse&) = delete;
  ConnectionUse& operator=(const ConnectionUse&) = delete;

  Connectable& operator*() const { return *connection_; }
  Connectable* operator->() const { return connection_; }
  Connectable* get() const { return connection_; }

 private:
  ConnectedDevice& device_;
  Connectable* connection_;
};

}  // namespace qvn
