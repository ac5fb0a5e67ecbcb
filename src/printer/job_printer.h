// JobPrinter: what the printers of both families have beside their states: the clients that want to be told,
// the connection of the open job and the number of opens.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>

#include "device/client_registration.h"
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

  Connectable* printConnection() const { return printConnection_; }
  // Keeps the connection for the job.
  void keepPrintConnection(Connectable* connection);
  // Gives it back.
  void releasePrintConnection();
  std::uint32_t openCount() const { return openCount_; }
  void setOpenCount(std::uint32_t count) { openCount_ = count; }

 protected:
  // `family` is the name of the class in the log.
  explicit JobPrinter(const char* family) : family_(family) {}

  virtual std::unique_ptr<PrinterAlertTask> newAlertTask() = 0;
  virtual void logNoAlertTask(const char* operation) = 0;

  // Whether the caller is inside a notification: the operation that it reports on is not over.
  bool isReportingHere() const { return reportingThread_ == std::this_thread::get_id(); }

 private:
  PrinterAlertTask* alertTask();
  NotificationTask* notificationTask();
  NotificationTask* makeNotificationTask();
  void logNoNotificationTask(const char* operation) const;

  const char* const family_;
  // The thread that tells the clients what it does to the state.
  std::atomic<std::thread::id> reportingThread_{};
  // Held while a task is made.
  CriticalSection taskLock_;
  std::unique_ptr<NotificationTask> notificationTask_;
  std::unique_ptr<PrinterAlertTask> alertTask_;
  Connectable* printConnection_ = nullptr;
  std::uint32_t openCount_ = 0;
};

}  // namespace qvn
