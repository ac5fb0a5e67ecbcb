// ConnectedDevice: what printers, scanners and HIDs share: the connections of their transport, by name.
#pragma once

#include <string>

#include "qvn/transport/device.h"

namespace qvn {

class ConnectedDevice : public Device {
 public:
  // The named connection of the device's transport; give it back with doReleaseConnection.
  virtual Connectable* doGetConnection(const std::string& connectionName);
  virtual void doReleaseConnection(Connectable* connection);
  // Keeps a connection beyond the operation that got it, or ends that.
  virtual void doPersistConnection(Connectable* connection, bool keep);

 protected:
  // `kind` is the name of the kind's class in the log.
  explicit ConnectedDevice(const char* kind) : kind_(kind) {}

 private:
  const char* const kind_;
};

}  // namespace qvn
