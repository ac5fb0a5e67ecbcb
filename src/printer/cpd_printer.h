// CpdPrinter: a printer that speaks NPA packets; what it does at any moment is its state's matter.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <thread>

#include "device/printer.h"
#include "printer/cpd_printer_alert_task.h"
#include "printer/cpd_printer_state.h"
#include "printer/mwo.h"
#include "printer/notification_task.h"

namespace qvn {

class CpdPrinter : public Printer {
 public:
  CpdPrinter();
  ~CpdPrinter() override;

  std::uint32_t doOpen() override;
  std::uint32_t doClose() override;
  std::uint32_t doStartJob(const JobRequest& job) override;
  std::uint32_t doPrint(Data& request) override;
  std::uint32_t doWrite(Data& request) override;
  std::uint32_t doEndJob() override;
  std::uint32_t doCancelPrint() override;
  std::uint32_t doExchangeNpa(Data& request, Data& response) override;
  std::uint32_t doGetCache(Data& cache) override;
  std::uint32_t doRegisterForAlerts(const AlertRegistration& registration) override;
  std::uint32_t doUnregisterForAlerts(std::uint32_t clientId) override;
  std::uint32_t doRegisterForNotifications(const NotificationRegistration& registration) override;
  std::uint32_t doUnregisterForNotifications(std::uint32_t clientId) override;
  std::uint32_t doGetCurrentState(std::uint32_t& state) override;
  void notifyJobStatus(const Notification& record) override;
  void setBidiAllowed(bool allowed) override;
  void shutDown() override;

  // For the states, which are called with the state lock held.

  // The one way from state to state: stores the new one and enters it.
  void changeState(const CpdPrinterState& state);
  void sendJobStatus(std::uint32_t id);
  Mwo& writer() { return writer_; }
  bool isWriterEnabled() const { return writerEnabled_; }
  Connectable* printConnection() const { return printConnection_; }
  void setPrintConnection(Connectable* connection) { printConnection_ = connection; }
  std::uint32_t openCount() const { return openCount_; }
  void setOpenCount(std::uint32_t count) { openCount_ = count; }
  bool isFirstDataSent() const { return firstDataSent_; }
  void setFirstDataSent(bool sent) { firstDataSent_ = sent; }

  // The cache: the last reply to GetCacheCommand, empty until there is one. From any thread.
  Data cache();
  void setCache(const Data& cache);
  // Changes one entry of the cache, if there is a valid cache that has it with that length.
  void updateCacheEntry(std::uint16_t id, std::span<const std::uint8_t> value);

 private:
  // Runs an operation of the current state under the state lock. 170 from inside a notification: the
  // operation that it reports on is not over.
  template <typename Operation>
  std::uint32_t withState(Operation&& operation);
  bool isReportingHere() const { return reportingThread_ == std::this_thread::get_id(); }

  std::uint32_t fetchCacheByNpa(Data& cache);
  PrinterAlertTask* makeAlertTask();
  NotificationTask* notificationTask();
  NotificationTask* makeNotificationTask();

  const CpdPrinterState* state_;
  CriticalSection stateLock_;
  // The thread that tells the clients what it does to the state.
  std::atomic<std::thread::id> reportingThread_{};
  CriticalSection taskLock_;
  std::unique_ptr<NotificationTask> notificationTask_;
  std::unique_ptr<CpdPrinterAlertTask> alertTask_;
  Connectable* printConnection_ = nullptr;
  // Alerts change the cache on the transport's thread.
  CriticalSection cacheLock_;
  Data cache_;
  Mwo writer_;
  std::atomic<bool> writerEnabled_{false};
  bool firstDataSent_ = false;
  std::uint32_t openCount_ = 0;
};

}  // namespace qvn
