#include "device/open_connection.h"

#include <optional>
#include <utility>

#include "common/exception.h"
#include "common/logging/basic_logger.h"
#include "device/connection_use.h"
#include "qvn/result_codes.h"

namespace qvn {

OpenConnection::OpenConnection(OpenConnection&& other) noexcept
    : device_(other.device_),
      connection_(std::exchange(other.connection_, {})),
      receives_(other.receives_),
      kept_(std::move(other.kept_)) {}

OpenConnection& OpenConnection::operator=(OpenConnection&& other) noexcept {
  close();
  device_ = other.device_;
  connection_ = std::exchange(other.connection_, {});
  receives_ = other.receives_;
  kept_ = std::move(other.kept_);
  return *this;
}

std::uint32_t OpenConnection::open(ConnectedDevice& device, const Connection& connection) {
  const std::uint32_t rc = connection.open();
  if (rc != QRN_ERROR_SUCCESS) return rc;
  device_ = &device;
  connection_ = connection;
  receives_ = false;
  return QRN_ERROR_SUCCESS;
}

std::uint32_t OpenConnection::openReceiving(ConnectedDevice& device, const Connection& connection) {
  std::uint32_t rc = connection.setReceiver(&device);
  if (rc == QRN_ERROR_SUCCESS) rc = open(device, connection);
  if (rc != QRN_ERROR_SUCCESS) {
    connection.setReceiver(nullptr);
    return rc;
  }
  receives_ = true;
  return QRN_ERROR_SUCCESS;
}

std::uint32_t OpenConnection::close(const char* name) {
  if (!connection_) return QRN_ERROR_SUCCESS;
  std::optional<ConnectionUse> use;
  try {
    if (name != nullptr) use.emplace(*device_, name);
  } catch (...) {
    const std::uint32_t code = codeOfCurrentException();
    logError(log_component::server(),
             [&] { return LogText() << "OpenConnection::close() no connection=" << name << " rc=" << code; });
  }
  const Connection connection = std::exchange(connection_, {});
  const std::uint32_t rc = connection.close();
  if (receives_) connection.setReceiver(nullptr);
  kept_.end(use && (*use)->isSameAs(connection));
  return rc;
}

}  // namespace qvn
