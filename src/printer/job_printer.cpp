#include "printer/job_printer.h"

#include <new>
#include <utility>

#include "common/logging/basic_logger.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"

namespace qvn {

void JobPrinter::keepPrintConnection(Connectable* connection) {
  printConnection_ = connection;
  doPersistConnection(connection, true);
}

void JobPrinter::releasePrintConnection() {
  Connectable* const connection = std::exchange(printConnection_, nullptr);
  doPersistConnection(connection, false);
  doReleaseConnection(connection);
}

PrinterAlertTask* JobPrinter::alertTask() {
  CriticalSectionLock lock(taskLock_);
  try {
    if (!alertTask_) alertTask_ = newAlertTask();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
  return alertTask_.get();
}

std::uint32_t JobPrinter::doRegisterForAlerts(const AlertRegistration& registration) {
  if (PrinterAlertTask* const task = alertTask()) return task->registerClient(registration);
  logNoAlertTask("doRegisterForAlerts");
  return QRN_ERROR_INTERNAL_ERROR;
}

std::uint32_t JobPrinter::doUnregisterForAlerts(std::uint32_t clientId) {
  if (PrinterAlertTask* const task = alertTask()) return task->unregisterClient(clientId);
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
  NotificationTask* const task = notificationTask();
  if (task == nullptr) return;
  // Called with the state lock held, so there is one such thread at a time.
  const std::thread::id outer = reportingThread_.exchange(std::this_thread::get_id());
  task->notify(record);
  reportingThread_ = outer;
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
