#include "hid/hid_notification_manager.h"

#include <string>
#include <utility>

#include "common/logging/basic_logger.h"
#include "qvn/result_codes.h"

namespace qvn {

std::uint32_t HidNotificationManager::registerClient(std::uint32_t handle,
                                                     const NotificationRegistration& registration) {
  logDetail(log_component::server(), [] { return LogText() << "HidNotificationManager::register: "; });
  registrations_.add(handle, {registration});
  return QRN_ERROR_SUCCESS;
}

std::uint32_t HidNotificationManager::unregisterClient(std::uint32_t clientId, std::uint32_t handle) {
  logDetail(log_component::server(), [] { return LogText() << "HidNotificationManager::unregister: "; });
  registrations_.remove(handle, clientId);
  registrations_.waitForCalls(handle, clientId);
  return QRN_ERROR_SUCCESS;
}

void HidNotificationManager::acceptNotification(const Notification& notification) {
  logDetail(log_component::server(), [&] {
    return LogText() << "HidNotificationManager::acceptNotification("
                     << "handle=" << notification.handle << ", cat=" << notification.category
                     << ", id=" << notification.id;
  });
  registrations_.callEach(
      notification.handle,
      [&](Registration& client) {
        return client.category == notification.category &&
               std::exchange(client.lastId, notification.id) != notification.id;
      },
      [&](const Registration& client) {
        client.callback(notification.handle, hid_event::kCategory, notification.id, nullptr, 0,
                        client.clientId);
        logDetail(log_component::server(), [&] {
          return LogText() << "Callback client handle=" << notification.handle
                           << " clientID=" << client.clientId;
        });
      },
      [&](const Registration& /*client*/, const std::string& description) {
        logDetail(log_component::server(), [&] {
          return LogText() << "Caught Exception removing client handle=" << notification.handle
                           << " Exception=" << description;
        });
      });
}

}  // namespace qvn
