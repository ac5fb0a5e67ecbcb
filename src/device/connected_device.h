// ConnectedDevice: what printers, scanners and HIDs share: the connections of their transport, by name.
#pragma once

#include <string>

#include "device/connection.h"
#include "qvn/transport/device.h"

namespace qvn {

class ConnectedDevice : public Device {
 public:
  // The named connection of the device's transport; give it back (Connection::release). Throws Win32Exception
  // when there is none.
  virtual Connection doGetConnection(const std::string& connectionName);

  // Keeps a connection beyond the operation that got it, or ends that.
  virtual void doPersistConnection(const Connection& connection, bool keep);

 protected:
  // `kind` is the name of the kind's class in the log.
  explicit ConnectedDevice(const char* kind) : kind_(kind) {}

 private:
  const char* const kind_;
};

}  // namespace qvn
