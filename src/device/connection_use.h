// ConnectionUse: a connection of a printer for the duration of an operation.
#pragma once

#include <string>

#include "device/printer.h"
#include "qvn/transport/connection_manager.h"

namespace qvn {

// Gets the connection by name and gives it back when the scope ends.
class ConnectionUse {
 public:
  ConnectionUse(Printer& printer, const std::string& connectionName)
      : printer_(printer), connection_(printer.doGetConnection(connectionName)) {}
  ~ConnectionUse() { printer_.doReleaseConnection(connection_); }
  ConnectionUse(const ConnectionUse&) = delete;
  ConnectionUse& operator=(const ConnectionUse&) = delete;

  Connectable& operator*() const { return *connection_; }
  Connectable* operator->() const { return connection_; }
  Connectable* get() const { return connection_; }

 private:
  Printer& printer_;
  Connectable* connection_;
};

}  // namespace qvn
