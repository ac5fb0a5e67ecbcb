// PrinterObject: a printer as the clients of this process see it: how often each has it open, and whose job
// it works on.
#pragma once

#include <cstdint>
#include <map>
#include <memory>

#include "device/client_registration.h"
#include "device/job_description.h"
#include "device/printer.h"
#include "qvn/transport/critical_section.h"
#include "qvn/transport/notification.h"

namespace qvn {

// Any thread may call it. Without a device, close, endJob and exchangeNpa answer 1359.
class PrinterObject {
 public:
  // `printer` may be null when its family could not make one.
  PrinterObject(std::unique_ptr<Printer> printer, const std::string& attributes);
  PrinterObject(const PrinterObject&) = delete;
  PrinterObject& operator=(const PrinterObject&) = delete;
  virtual ~PrinterObject();

  virtual std::uint32_t cancelPrint(std::uint32_t clientId);
  // The client's last close ends the job that it owns. 1, and `wasOpen` false, when the client does not have
  // the printer open.
  virtual std::uint32_t close(std::uint32_t clientId, bool& wasOpen);
  // 5 when the client does not own the job.
  virtual std::uint32_t endJob(std::uint32_t clientId);
  virtual std::uint32_t exchangeNpa(std::uint32_t clientId, Data& request, Data& response);
  virtual std::uint32_t getCache(std::uint32_t clientId, Data& cache);
  virtual std::uint32_t getCurrentState(std::uint32_t clientId, std::uint32_t& state);
  virtual std::uint32_t open(std::uint32_t clientId);
  // 5 when the client does not own the job.
  virtual std::uint32_t print(std::uint32_t clientId, Data& request);
  virtual std::uint32_t registerForAlerts(const AlertRegistration& registration);
  virtual std::uint32_t registerForNotifications(const NotificationRegistration& registration);
  virtual std::uint32_t setByteArray(const std::string& descriptor, const std::uint8_t* bytes,
                                     std::uint32_t length);
  virtual std::uint32_t setLong(const std::string& descriptor, std::uint32_t value);
  virtual std::uint32_t setString(const std::string& descriptor, const std::string& value);
  virtual void setAttributes(const std::string& attributes);
  // The client becomes the job's owner; 5 when there is one already, and for client 0.
  virtual std::uint32_t startJob(std::uint32_t clientId, const JobRequest& job);
  virtual std::uint32_t unregisterForAlerts(std::uint32_t clientId);
  virtual std::uint32_t unregisterForNotifications(std::uint32_t clientId);

  void passNotification(const Notification& record);

  bool hasDevice() const { return device_ != nullptr; }
  bool isOpenBy(std::uint32_t clientId);
  std::string getAttributes() const;
  // As Printer::requestCancel.
  void requestCancel();
  // Ends the device's own threads.
  void shutDown();

 private:
  enum class Close { NotOpen, StillOpen, Last };
  Close closeOnce(std::uint32_t clientId);
  bool owns(std::uint32_t clientId) const { return clientId != 0 && jobOwner_ == clientId; }
  // The job has no owner afterwards, whatever came of it; unless it was refused.
  std::uint32_t endOwnedJob(std::uint32_t clientId);

  std::unique_ptr<Printer> device_;
  // 0 when no job is open. Taken by startJob before the device starts, so that of two clients one gets the
  // job.
  std::atomic<std::uint32_t> jobOwner_{0};
  std::map<std::uint32_t, std::uint32_t> openCounts_;
  CriticalSection openCountsLock_;
};

}  // namespace qvn
