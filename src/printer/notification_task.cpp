#include "printer/notification_task.h"

#include <vector>

#include "common/basic_logger.h"
#include "qvn/result_codes.h"

namespace qvn {

std::uint32_t NotificationTask::registerClient(const NotificationRegistration& registration) {
  CriticalSectionLock lock(clientsLock_);
  clients_[registration.clientId] = registration;
  return QRN_ERROR_SUCCESS;
}

std::uint32_t NotificationTask::unregisterClient(std::uint32_t clientId) {
  CriticalSectionLock lock(clientsLock_);
  return clients_.erase(clientId) != 0 ? QRN_ERROR_SUCCESS : QRN_ERROR_INVALID_FUNCTION;
}

bool NotificationTask::find(std::uint32_t clientId, NotificationRegistration& registration) {
  CriticalSectionLock lock(clientsLock_);
  const auto found = clients_.find(clientId);
  if (found == clients_.end()) return false;
  registration = found->second;
  return true;
}

void NotificationTask::notify(const Notification& record) {
  logDetail(log_component::server(), [&] {
    return LogText() << "NotificationTask handle=" << printerHandle_ << ", category=" << record.category
                     << ", notificationId=" << record.id;
  });
  std::vector<std::uint32_t> clientIds;
  {
    CriticalSectionLock lock(clientsLock_);
    for (const auto& client : clients_) clientIds.push_back(client.first);
  }
  for (const std::uint32_t clientId : clientIds) {
    // A client may have gone since, by another client's callback too.
    NotificationRegistration registration;
    if (!find(clientId, registration) || registration.callback == nullptr) continue;
    registration.callback(printerHandle_, record.category, record.id, record.data.getBuffer(),
                          record.data.getLength(), clientId);
  }
}

}  // namespace qvn
