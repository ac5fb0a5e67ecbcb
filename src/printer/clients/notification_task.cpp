#include "printer/clients/notification_task.h"

#include "common/logging/basic_logger.h"
#include "qvn/result_codes.h"
#include "qvn/transport/data.h"

namespace qvn {

std::uint32_t NotificationTask::registerClient(const NotificationRegistration& registration) {
  clients_.add(registration.clientId, registration);
  return QRN_ERROR_SUCCESS;
}

std::uint32_t NotificationTask::unregisterClient(std::uint32_t clientId) {
  const bool removed = clients_.remove(clientId);
  clients_.waitForCalls(clientId);
  return removed ? QRN_ERROR_SUCCESS : QRN_ERROR_INVALID_FUNCTION;
}

void NotificationTask::notify(const Notification& record) {
  logDetail(log_component::server(), [&] {
    return LogText() << "NotificationTask handle=" << printerHandle_ << ", category=" << record.category
                     << ", notificationId=" << record.id;
  });
  clients_.callEach([&](std::uint32_t clientId, const NotificationRegistration& registration) {
    registration.callback(printerHandle_, record.category, record.id, record.data.getBuffer(),
                          record.data.getLength(), clientId);
  });
}

}  // namespace qvn
