// HidNotificationManager: the clients that want the events of the HIDs, by HID.
#pragma once

#include <cstdint>

#include "common/clients/callback_registry.h"
#include "common/process_service.h"
#include "device/client_registration.h"
#include "device/notification.h"
#include "qvn/transport/notification.h"

namespace qvn {

class HidNotificationManager : public ProcessService<HidNotificationManager> {
 public:
  // A client that is registered for the HID stays as it is. Always 0.
  std::uint32_t registerClient(std::uint32_t handle, const NotificationRegistration& registration);
  // Always 0. Returns when the client is in no callback any more, unless called from one.
  std::uint32_t unregisterClient(std::uint32_t clientId, std::uint32_t handle);

  // Calls the HID's clients of the notification's category, each unless the id is the one it was told last (0
  // at first), in the order of their registration, on this thread, without a lock held. A client whose
  // callback throws is registered no more.
  void acceptNotification(const Notification& notification);

 private:
  friend class ProcessService<HidNotificationManager>;
  HidNotificationManager() = default;
  ~HidNotificationManager() = default;

  struct Registration : NotificationRegistration {
    std::uint32_t lastId = 0;
  };

  CallbackRegistry<Registration> registrations_{
      {.order = CallbackRules::Order::AsAdded, .throwingIsRemoved = true}};
};

}  // namespace qvn
