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
void Printer::requestCancel() {}
void Printer::shutDown() {}

Connection Printer::doGetConnection(const std::string& connectionName) {
  logDetail(log_component::server(), [&] {
    return LogText() << "Printer::doGetConnection() handle=" << getHandle() << ", connectionName=\""
                     << connectionName << "\"";
  });
  return ConnectedDevice::doGetConnection(connectionName);
}

void Printer::doPersistConnection(const Connection& connection, bool keep) {
  const std::uint32_t keepers = connection.keep(keep);
  logDetail(log_component::server(),
            [&] { return LogText() << "Printer: doPersistConnection() refCount=" << keepers; });
}

std::uint32_t Printer::changeAttributes(const AttributeChange& change) {
  CriticalSectionLock lock(lock_);
  std::string attributes = getAttributes();
  const std::uint32_t rc = change(attributes);
  if (rc == QRN_ERROR_SUCCESS) setAttributes(attributes);
  return rc;
}

std::uint32_t Printer::configure(const std::string& descriptor, const AttributeChange& change) {
  const OperationLock::Turn turn(configurationLock_);
  std::string attributes = getAttributes();
  std::uint32_t rc = change(attributes);
  if (rc != QRN_ERROR_SUCCESS) return rc;
  {
    const ConnectionUse connection(*this, connection_name::kConfiguration);
    rc = ConfigurationTask(*this, *connection, descriptor, attributes).execute();
  }
  if (rc != QRN_ERROR_SUCCESS) return rc;
  // Not the copy from before: others may have changed other attributes meanwhile.
  changeAttributes(change);
  doPersist();
  return QRN_ERROR_SUCCESS;
}

std::uint32_t Printer::doSetLong(const std::string& descriptor, std::uint32_t value) {
  TraceScope trace(BasicLogger::getInstance(), log_component::server(),
                   [&] { return LogText() << "Printer::doSetLong(" << descriptor << ")"; });
  logDetail(log_component::server(), [&] { return LogText() << "Printer::doSetLong, value=" << value; });
  const std::uint32_t rc = configure(descriptor, [&](std::string& attributes) {
    return AttributeCodec::setLong(attributes, descriptor, value);
  });
  trace.setRc(rc);
  return rc;
}

std::uint32_t Printer::doSetString(const std::string& descriptor, const std::string& value) {
  TraceScope trace(BasicLogger::getInstance(), log_component::server(),
                   [&] { return LogText() << "Printer::doSetString(" << descriptor << ")"; });
  logDetail(log_component::server(), [&] { return LogText() << "Printer::doSetString, value=" << value; });
  const std::uint32_t rc = configure(descriptor, [&](std::string& attributes) {
    return AttributeCodec::setString(attributes, descriptor, value);
  });
  trace.setRc(rc);
  return rc;
}

std::uint32_t Printer::doSetByteArray(const std::string& descriptor, const std::uint8_t* bytes,
                                      std::uint32_t length) {
  TraceScope trace(BasicLogger::getInstance(), log_component::server(),
                   [&] { return LogText() << "Printer::doSetByteArray(" << descriptor << ")"; });
  const std::uint32_t rc = configure(descriptor, [&](std::string& attributes) {
    return AttributeCodec::setByteArray(attributes, descriptor, bytes, length);
  });
  trace.setRc(rc);
  return rc;
}

void Printer::doPersist() { PrinterStore::getInstance().persist(getAttributes()); }

void Printer::doUpdate() {
  const std::string text = getAttributes();
  storeReported(text, [&] { return PrinterStore::getInstance().update(text); });
}

}  // namespace qvn
