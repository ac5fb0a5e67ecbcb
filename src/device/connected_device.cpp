#include "device/connected_device.h"

#include "common/exception.h"
#include "qvn/result_codes.h"
#include "transport/call_transport.h"
#include "transport/transports.h"

namespace qvn {

Connection ConnectedDevice::doGetConnection(const std::string& connectionName) {
  const std::string attributes = getAttributes();
  auto [module, manager] = Transports::getInstance().getConnectionManager(attributes);
  ConnectionManager& from = *manager;
  Connectable* const connection =
      callTransport("getConnection", [&] { return from.getConnection(attributes, connectionName); });
  if (connection == nullptr) {
    throw Win32Exception(std::string(kind_) + "::doGetConnection() no connection=" + connectionName,
                         QRN_ERROR_INTERNAL_ERROR, "", 0);
  }
  return {std::move(module), from, *connection};
}

void ConnectedDevice::doPersistConnection(const Connection& connection, bool keep) { connection.keep(keep); }

}  // namespace qvn
