#include "printer/job_printer.h"

#include <new>
#include <utility>

#include "common/logging/basic_logger.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "qvn/transport/connection_manager.h"

namespace qvn {

void JobPrinter::keepBidi(OpenConnection bidi) {
  bidi.keep();
  bidi_ = std::move(bidi);
}

void JobPrinter::keepPrintConnection(OpenConnection connection) {
  connection.keep();
  printConnection_ = std::move(connection);
}

std::uint32_t JobPrinter::closeConnections() {
  if (PrinterAlertTask* const task = alertTask()) task->unregisterAll();
  printConnection_.close();
  const std::uint32_t rc = bidi_.close(connection_name::kBidi);
  setBidiAllowed(false);
  return rc;
}

void JobPrinter::endRegistrations() {
  if (PrinterAlertTask* const task = alertTask()) {
    task->unregisterAll();
    task->waitForCalls(0);
  }
  if (NotificationTask* const task = notificationTask()) task->unregisterAll();
}

PrinterAlertTask* JobPrinter::alertTask() {
  CriticalSectionLock lock(taskLock_);
  return alertTask_.get();
}

PrinterAlertTask* JobPrinter::makeAlertTask() {
  CriticalSectionLock lock(taskLock_);
  try {
    if (!alertTask_) alertTask_ = newAlertTask();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
  return alertTask_.get();
}

std::uint32_t JobPrinter::doRegisterForAlerts(const AlertRegistration& registration) {
  if (PrinterAlertTask* const task = makeAlertTask()) return task->registerClient(registration);
  logNoAlertTask("doRegisterForAlerts");
  return QRN_ERROR_INTERNAL_ERROR;
}

std::uint32_t JobPrinter::doUnregisterForAlerts(std::uint32_t clientId) {
  if (PrinterAlertTask* const task = makeAlertTask()) return task->unregisterClient(clientId);
  logNoAlertTask("doUnregisterForAlerts");
  return QRN_ERROR_INTERNAL_ERROR;
}

NotificationTask* JobPrinter::notificationTask() {
  CriticalSectionLock lock(taskLock_);
  return notificationTask_.get();
}

NotificationTask* JobPrinter::makeNotificationTask() {
  CriticalSectionLock lock(taskLock_);
  if (!notificationTask_) {
    std::uint32_t handle = 0;
    const std::string attributes = getAttributes();
    if (AttributeCodec::getLong(attributes, attribute::kHandle, handle) == QRN_ERROR_SUCCESS) {
      notificationTask_ = std::make_unique<NotificationTask>(handle);
    } else {
      logError(log_component::server(),
               [&] { return LogText() << "TransportString does not contain handle:" << attributes; });
    }
  }
  return notificationTask_.get();
}

void JobPrinter::logNoNotificationTask(const char* operation) const {
  logError(log_component::server(),
           [&] { return LogText() << family_ << "::" << operation << "() cannot get NotificationTask"; });
}

std::uint32_t JobPrinter::doRegisterForNotifications(const NotificationRegistration& registration) {
  if (NotificationTask* const task = makeNotificationTask()) return task->registerClient(registration);
  logNoNotificationTask("doRegisterForNotifications");
  return QRN_ERROR_INTERNAL_ERROR;
}

std::uint32_t JobPrinter::doUnregisterForNotifications(std::uint32_t clientId) {
  if (NotificationTask* const task = makeNotificationTask()) return task->unregisterClient(clientId);
  logNoNotificationTask("doUnregisterForNotifications");
  return QRN_ERROR_INTERNAL_ERROR;
}

void JobPrinter::notifyJobStatus(const Notification& record) {
  if (NotificationTask* const task = notificationTask()) task->notify(record);
}

void JobPrinter::passNotification(const Notification& record) {
  if (NotificationTask* const task = notificationTask()) task->notify(record);
}

void JobPrinter::setBidiAllowed(bool allowed) {
  logDetail(log_component::server(), [&] {
    return LogText() << family_ << "::setBidiAllowed(" << allowed << ") handle=" << getHandle();
  });
  Printer::setBidiAllowed(allowed);
}

}  // namespace qvn
