// NotificationTask: tells the clients of a printer what its job does.
#pragma once

#include <cstdint>

#include "common/clients/callback_registry.h"
#include "device/client_registration.h"
#include "device/notification.h"
#include "qvn/transport/notification.h"

namespace qvn {

// Every registered client gets every record, whatever category it registered with. Clients are called on the
// thread that notifies, without a lock of this object held; one whose unregistration has returned is called
// no more.
class NotificationTask {
 public:
  explicit NotificationTask(std::uint32_t printerHandle) : printerHandle_(printerHandle) {}

  // Replaces the registration that the client has.
  std::uint32_t registerClient(const NotificationRegistration& registration);
  // 1 when the client has no registration. Outside callbacks it returns when no call of the client is
  // running.
  std::uint32_t unregisterClient(std::uint32_t clientId);
  void unregisterAll();
  // Never throws: the operation that it reports on goes on.
  void notify(const Notification& record) noexcept;

 private:
  std::uint32_t printerHandle_;
  CallbackRegistry<NotificationRegistration> clients_{{}};
};

}  // namespace qvn
