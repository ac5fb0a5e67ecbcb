// JobPrinter: what the printers of both families have beside their states: the clients that want to be told,
// the connection of the open job and the number of opens.
#pragma once

#include <cstdint>
#include <memory>

#include "device/client_registration.h"
#include "device/open_connection.h"
#include "device/printer.h"
#include "printer/clients/notification_task.h"
#include "printer/clients/printer_alert_task.h"
#include "qvn/transport/critical_section.h"
#include "qvn/transport/notification.h"

namespace qvn {

class JobPrinter : public Printer {
 public:
  std::uint32_t doRegisterForAlerts(const AlertRegistration& registration) override;
  std::uint32_t doUnregisterForAlerts(std::uint32_t clientId) override;
  std::uint32_t doRegisterForNotifications(const NotificationRegistration& registration) override;
  std::uint32_t doUnregisterForNotifications(std::uint32_t clientId) override;
  void notifyJobStatus(const Notification& record) override;
  void passNotification(const Notification& record) override;
  void setBidiAllowed(bool allowed) override;

  // For the states, which are called with the state lock held.

  // Kept while the printer is open, and for a job.
  void keepBidi(OpenConnection bidi);
  void keepPrintConnection(OpenConnection connection);
  const Connection& printConnection() const { return printConnection_.connection(); }
  void closePrintConnection() { printConnection_.close(); }
  // Ends what an open printer keeps, the registrations for alerts among it: the transport's answer to the
  // close of the "bidi" connection.
  std::uint32_t closeConnections();
  std::uint32_t openCount() const { return openCount_; }
  void setOpenCount(std::uint32_t count) { openCount_ = count; }

 protected:
  // `family` is the name of the class in the log.
  explicit JobPrinter(const char* family) : family_(family) {}

  virtual std::unique_ptr<PrinterAlertTask> newAlertTask() = 0;
  virtual void logNoAlertTask(const char* operation) = 0;

  // Null while nobody has asked for alerts.
  PrinterAlertTask* alertTask();
  bool isConnected() const { return bidi_ || printConnection_; }
  // Ends the registrations; the caller holds no lock.
  void endRegistrations();

 private:
  PrinterAlertTask* makeAlertTask();
  NotificationTask* notificationTask();
  NotificationTask* makeNotificationTask();
  void logNoNotificationTask(const char* operation) const;

  const char* const family_;
  // Held while a task is made.
  CriticalSection taskLock_;
  std::unique_ptr<NotificationTask> notificationTask_;
  std::unique_ptr<PrinterAlertTask> alertTask_;
  OpenConnection bidi_;
  OpenConnection printConnection_;
  std::uint32_t openCount_ = 0;
};

}  // namespace qvn
