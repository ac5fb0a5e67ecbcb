// Printer: the base of the printer devices.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "common/clients/operation_lock.h"
#include "device/client_registration.h"
#include "device/connected_device.h"
#include "device/job_description.h"
#include "device/notification.h"
#include "qvn/transport/critical_section.h"
#include "qvn/transport/notification.h"

namespace qvn {

// Operations that a family does not override answer 1. Client threads call them; each family locks for
// itself.
class Printer : public ConnectedDevice {
 public:
  Printer();
  ~Printer() override = 0;

  virtual std::uint32_t doStartJob(const JobRequest& job);
  // Takes print data; the request's count tells how many bytes were taken.
  virtual std::uint32_t doPrint(Data& request);
  virtual std::uint32_t doWrite(Data& request);
  virtual std::uint32_t doEndJob();
  virtual std::uint32_t doCancelPrint();
  // Exchanges a raw NPA packet; the response is replaced by the reply.
  virtual std::uint32_t doExchangeNpa(Data& request, Data& response);
  virtual std::uint32_t doGetCache(Data& cache);
  virtual std::uint32_t doRegisterForAlerts(const AlertRegistration& registration);
  virtual std::uint32_t doUnregisterForAlerts(std::uint32_t clientId);
  virtual std::uint32_t doRegisterForNotifications(const NotificationRegistration& registration);
  virtual std::uint32_t doUnregisterForNotifications(std::uint32_t clientId);
  // 1 busy printing, 2 error, 3 idle.
  virtual std::uint32_t doGetCurrentState(std::uint32_t& state);
  virtual void notifyJobStatus(const Notification& record);
  // Tells the clients what another device, the scanner beside it, has to say.
  virtual void passNotification(const Notification& record);
  virtual void setBidiAllowed(bool allowed);

  Connection doGetConnection(const std::string& connectionName) override;
  void doPersistConnection(const Connection& connection, bool keep) override;

  // Asks for the job to be cancelled as soon as what is written at the moment has been written. For a printer
  // that writes on a thread of its own, after its clients' writes have returned. Any thread; waits for
  // nothing.
  virtual void requestCancel();

  // Ends the printer's own threads, throwing away what they still had to write. Before the transports go.
  virtual void shutDown();

  // Whether the library has told the printer to send alerts.
  void setAlertsRegistered(bool registered) { alertsRegistered_ = registered; }
  bool areAlertsRegistered() const { return alertsRegistered_; }

  JobDescription& jobDescription() { return jobDescription_; }

  // Changes the attribute text in one step; the change's result, and nothing changed unless that is 0.
  using AttributeChange = std::function<std::uint32_t(std::string& attributes)>;
  std::uint32_t changeAttributes(const AttributeChange& change);

 protected:
  // Held while an attribute is changed and the transport told, and while the stored text takes the place of
  // this one.
  OperationLock& configurationLock() { return configurationLock_; }
  // A printer's attribute changes when its transport accepts the change, which is then written to the store.
  std::uint32_t doSetByteArray(const std::string& descriptor, const std::uint8_t* bytes,
                               std::uint32_t length) override;
  std::uint32_t doSetLong(const std::string& descriptor, std::uint32_t value) override;
  std::uint32_t doSetString(const std::string& descriptor, const std::string& value) override;
  void doPersist() override;
  void doUpdate() override;

 private:
  std::uint32_t configure(const std::string& descriptor, const AttributeChange& change);

  JobDescription jobDescription_;
  std::atomic<bool> alertsRegistered_{false};
  OperationLock configurationLock_{LockRank::Configuration};
};

}  // namespace qvn
