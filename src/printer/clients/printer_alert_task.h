// PrinterAlertTask: registers with a printer for the alerts that its clients want, and tells each client of
// them.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>

#include "common/clients/callback_registry.h"
#include "common/tasks/task.h"
#include "device/client_registration.h"
#include "device/printer.h"
#include "npa/alert_registration.h"
#include "qvn/transport/critical_section.h"
#include "qvn/transport/observer.h"

namespace qvn {

// A listener: it observes the printer while it has clients and is never executed. Clients are called on the
// transport's thread, without a lock held; a client whose unregistration has returned is called no more.
class PrinterAlertTask : public Task, public Observer {
 public:
  explicit PrinterAlertTask(Printer& printer);
  // Nobody may be registering; the printer must not deliver alerts any more.
  ~PrinterAlertTask() override;

  // 87 for a mask of 0; 1 when the printer accepts no registration, and then the client is not kept.
  std::uint32_t registerClient(const AlertRegistration& registration);
  // 1 when the client has no registration.
  std::uint32_t unregisterClient(std::uint32_t clientId);

 protected:
  using Observer::doUpdate;
  void doUpdate(Data& data) override;

  // The printer forgot what it was told.
  void setRegistrationNeeded() { registrationNeeded_ = true; }

  Printer& printer_;

 private:
  std::uint32_t maskOfOthers(std::uint32_t clientId) const;
  std::uint32_t maskOfAll() const;
  // Sends the commands that a change of the mask needs; true when the printer accepted one.
  bool sendRegistrations(std::uint32_t oldMask, std::uint32_t newMask, bool unregistering);
  std::uint32_t add(const AlertRegistration& registration);
  void finishRemoval(std::uint32_t clientId);

  CallbackRegistry<AlertRegistration> clients_;
  // Serialises registering and unregistering, so that what the printer was told follows the clients.
  CriticalSection registrationLock_;
  std::array<std::unique_ptr<AlertRegistrationCommand>, 5> commands_;
  std::atomic<bool> registrationNeeded_{true};
  bool listening_ = false;
};

}  // namespace qvn
