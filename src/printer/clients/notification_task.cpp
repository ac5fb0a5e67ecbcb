#include "printer/clients/notification_task.h"

#include "common/logging/basic_logger.h"
#include "qvn/result_codes.h"
#include "qvn/transport/data.h"

namespace qvn {

std::uint32_t NotificationTask::registerClient(const NotificationRegistration& registration) {
  clients_.replace(printerHandle_, registration);
  return QRN_ERROR_SUCCESS;
}

std::uint32_t NotificationTask::unregisterClient(std::uint32_t clientId) {
  const bool removed = clients_.remove(printerHandle_, clientId);
  clients_.waitForCalls(printerHandle_, clientId);
  return removed ? QRN_ERROR_SUCCESS : QRN_ERROR_INVALID_FUNCTION;
}

void NotificationTask::unregisterAll() {
  clients_.removeAll(printerHandle_);
  clients_.waitForCalls(printerHandle_, 0);
}

void NotificationTask::notify(const Notification& record) noexcept {
  const auto thrown = [&](std::uint32_t clientId, const std::string& what) {
    logError(log_component::server(), [&] {
      return LogText() << "NotificationTask handle=" << printerHandle_
                       << " Caught Exception clientId=" << clientId << ", Exception=" << what;
    });
  };
  try {
    logDetail(log_component::server(), [&] {
      return LogText() << "NotificationTask handle=" << printerHandle_ << ", category=" << record.category
                       << ", notificationId=" << record.id;
    });
    clients_.callEach(
        printerHandle_, [](const NotificationRegistration&) { return true; },
        [&](const NotificationRegistration& client) {
          client.callback(printerHandle_, record.category, record.id, record.data.getBuffer(),
                          record.data.getLength(), client.clientId);
        },
        [&](const NotificationRegistration& client, const std::string& what) {
          thrown(client.clientId, what);
        });
  } catch (const std::exception&) {
    // No memory to tell anybody.
  }
}

}  // namespace qvn
