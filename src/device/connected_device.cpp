#include "device/connected_device.h"

#include "common/exception.h"
#include "qvn/result_codes.h"
#include "qvn/transport/connection_manager.h"
#include "transport/transport_dll.h"
#include "transport/transports.h"

namespace qvn {

Connectable* ConnectedDevice::doGetConnection(const std::string& connectionName) {
  const std::string attributes = getAttributes();
  ConnectionManager& manager = Transports::getInstance().getConnectionManager(attributes);
  Connectable* const connection =
      callTransport("getConnection", [&] { return manager.getConnection(attributes, connectionName); });
  if (connection == nullptr) {
    throw Win32Exception(std::string(kind_) + "::doGetConnection() no connection=" + connectionName,
                         QRN_ERROR_INTERNAL_ERROR, "", 0);
  }
  return connection;
}

void ConnectedDevice::doReleaseConnection(Connectable* connection) {
  if (connection == nullptr) return;
  try {
    Transports::getInstance().getConnectionManager(getAttributes()).releaseConnection(connection);
  } catch (...) {
    // The connection is the transport's, whatever it makes of the release.
  }
}

void ConnectedDevice::doPersistConnection(Connectable* connection, bool keep) {
  if (connection == nullptr) return;
  const std::uint32_t tag = connection->getTag();
  if (keep) {
    connection->setTag(tag + 1);
  } else if (tag != 0) {
    connection->setTag(tag - 1);
  }
}

}  // namespace qvn
