// PrinterAlertTask: registers with a printer for the alerts that its clients want, and tells each client of
// them.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

#include "common/clients/callback_registry.h"
#include "common/tasks/task.h"
#include "device/client_registration.h"
#include "device/kept_connection.h"
#include "device/printer.h"
#include "qvn/transport/observer.h"

namespace qvn {

// A listener: it observes the printer while it has clients and is never executed. Clients are called on the
// transport's thread, without a lock held; a client whose unregistration has returned is called no more.
class PrinterAlertTask : public Task, public Observer {
 public:
  explicit PrinterAlertTask(Printer& printer) : printer_(printer) {}
  // The printer must not deliver alerts any more.
  ~PrinterAlertTask() override = default;

  // 87 for a mask of 0; 1 when the printer accepts no registration, and then the client is not kept. Callers
  // serialise it with itself and with unregisterClient, but for those inside a callback.
  std::uint32_t registerClient(const AlertRegistration& registration);
  // 1 when the client has no registration. A call of the client may still be running.
  std::uint32_t unregisterClient(std::uint32_t clientId);
  // Without telling the printer, whose connection ends.
  void unregisterAll();
  // Returns when no call of the client, or with 0 of any, is running that was unregistered; at once inside a
  // callback.
  void waitForCalls(std::uint32_t clientId) { clients_.waitForCalls(kPrinter, clientId); }

 protected:
  using Observer::doUpdate;
  void doUpdate(Data& data) override;

  // The printer forgot what it was told.
  void setRegistrationNeeded() { registrationNeeded_ = true; }

  Printer& printer_;

 private:
  // The registry is this printer's.
  static constexpr std::uint32_t kPrinter = 0;

  std::uint32_t maskOfOthers(std::uint32_t clientId) const;
  std::uint32_t maskOfAll() const { return maskOfOthers(0); }
  // Sends the commands that a change of the mask needs; true when the printer accepted one.
  bool sendRegistrations(std::uint32_t oldMask, std::uint32_t newMask, bool unregistering);
  void listen();
  // Without a client nothing is listened to or kept.
  void settle();

  CallbackRegistry<AlertRegistration> clients_{{}};
  std::atomic<bool> registrationNeeded_{true};

  std::mutex listeningMutex_;  // guards what follows
  bool listening_ = false;
  // The "bidi" connection stays while there are clients.
  KeptConnection channel_;
};

}  // namespace qvn
