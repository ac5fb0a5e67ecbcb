#include "device/printer.h"

#include "common/logging/trace_scope.h"
#include "device/configuration_task.h"
#include "device/connection_use.h"
#include "device/store/printer_store.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/connection_manager.h"

namespace qvn {

Printer::Printer() : ConnectedDevice("Printer") {}
Printer::~Printer() = default;

std::uint32_t Printer::doStartJob(const JobRequest& /*job*/) { return QRN_ERROR_INVALID_FUNCTION; }
std::uint32_t Printer::doPrint(Data& /*request*/) { return QRN_ERROR_INVALID_FUNCTION; }
std::uint32_t Printer::doWrite(Data& /*request*/) { return QRN_ERROR_INVALID_FUNCTION; }
std::uint32_t Printer::doEndJob() { return QRN_ERROR_INVALID_FUNCTION; }
std::uint32_t Printer::doCancelPrint() { return QRN_ERROR_INVALID_FUNCTION; }
std::uint32_t Printer::doExchangeNpa(Data& /*request*/, Data& /*response*/) {
  return QRN_ERROR_INVALID_FUNCTION;
}
std::uint32_t Printer::doGetCache(Data& /*cache*/) { return QRN_ERROR_INVALID_FUNCTION; }
std::uint32_t Printer::doRegisterForAlerts(const AlertRegistration& /*registration*/) {
  return QRN_ERROR_INVALID_FUNCTION;
}
std::uint32_t Printer::doUnregisterForAlerts(std::uint32_t /*clientId*/) {
  return QRN_ERROR_INVALID_FUNCTION;
}
std::uint32_t Printer::doRegisterForNotifications(const NotificationRegistration& /*registration*/) {
  return QRN_ERROR_INVALID_FUNCTION;
}
std::uint32_t Printer::doUnregisterForNotifications(std::uint32_t /*clientId*/) {
  return QRN_ERROR_INVALID_FUNCTION;
}
std::uint32_t Printer::doGetCurrentState(std::uint32_t& /*state*/) { return QRN_ERROR_INVALID_FUNCTION; }
void Printer::notifyJobStatus(const Notification& /*record*/) {}
void Printer::passNotification(const Notification& /*record*/) {}
void Printer::setBidiAllowed(bool allowed) { bidiAllowed_ = allowed; }
void Printer::shutDown() {}

Connectable* Printer::doGetConnection(const std::string& connectionName) {
  logDetail(log_component::server(), [&] {
    return LogText() << "Printer::doGetConnection() handle=" << getHandle() << ", connectionName=\""
                     << connectionName << "\"";
  });
  return ConnectedDevice::doGetConnection(connectionName);
}

void Printer::doPersistConnection(Connectable* connection, bool keep) {
  if (connection == nullptr) return;
  ConnectedDevice::doPersistConnection(connection, keep);
  logDetail(log_component::server(),
            [&] { return LogText() << "Printer: doPersistConnection() refCount=" << connection->getTag(); });
}

std::uint32_t Printer::configure(const std::string& descriptor, const std::string& attributes) {
  std::uint32_t rc = QRN_ERROR_SUCCESS;
  {
    const ConnectionUse connection(*this, connection_name::kConfiguration);
    rc = ConfigurationTask(*this, *connection, descriptor, attributes).execute();
  }
  if (rc == QRN_ERROR_SUCCESS) {
    setAttributes(attributes);
    doPersist();
  }
  return rc;
}

std::uint32_t Printer::doSetLong(const std::string& descriptor, std::uint32_t value) {
  TraceScope trace(BasicLogger::getInstance(), log_component::server(),
                   [&] { return LogText() << "Printer::doSetLong(" << descriptor << ")"; });
  logDetail(log_component::server(), [&] { return LogText() << "Printer::doSetLong, value=" << value; });
  CriticalSectionLock lock(configurationLock_);
  std::string attributes = getAttributes();
  const std::uint32_t rc = AttributeCodec::setLong(attributes, descriptor, value);
  return rc != QRN_ERROR_SUCCESS ? rc : configure(descriptor, attributes);
}

std::uint32_t Printer::doSetString(const std::string& descriptor, const std::string& value) {
  TraceScope trace(BasicLogger::getInstance(), log_component::server(),
                   [&] { return LogText() << "Printer::doSetString(" << descriptor << ")"; });
  logDetail(log_component::server(), [&] { return LogText() << "Printer::doSetString, value=" << value; });
  CriticalSectionLock lock(configurationLock_);
  std::string attributes = getAttributes();
  const std::uint32_t rc = AttributeCodec::setString(attributes, descriptor, value);
  return rc != QRN_ERROR_SUCCESS ? rc : configure(descriptor, attributes);
}

std::uint32_t Printer::doSetByteArray(const std::string& descriptor, const std::uint8_t* bytes,
                                      std::uint32_t length) {
  TraceScope trace(BasicLogger::getInstance(), log_component::server(),
                   [&] { return LogText() << "Printer::doSetByteArray(" << descriptor << ")"; });
  CriticalSectionLock lock(configurationLock_);
  std::string attributes = getAttributes();
  const std::uint32_t rc = AttributeCodec::setByteArray(attributes, descriptor, bytes, length);
  return rc != QRN_ERROR_SUCCESS ? rc : configure(descriptor, attributes);
}

void Printer::doPersist() { PrinterStore::getInstance().persist(getAttributes()); }

void Printer::doUpdate() { PrinterStore::getInstance().update(getAttributes()); }

}  // namespace qvn
