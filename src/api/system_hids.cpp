// What the exported HID functions forward to.
#include "api/device_calls.h"
#include "api/stored_attributes.h"
#include "api/system.h"
#include "common/clients/operation_lock.h"
#include "device/client_registration.h"
#include "device/hid.h"
#include "device/store/hid_store.h"
#include "device/store/hid_table.h"
#include "hid/hid_notification_manager.h"
#include "hid/hid_object.h"
#include "hid/hid_report_manager.h"
#include "qvn/result_codes.h"

namespace qvn {
namespace {

using Hids = DeviceCalls<HidTable, HidStore, HidObject>;

}  // namespace

std::uint32_t System::qvnOpenHid(std::uint32_t clientId, std::uint32_t handle) {
  return Hids::open(clientId, handle, {QRN_ERROR_BUSY, QRN_ERROR_DUP_NAME});
}

std::uint32_t System::qvnCloseHid(std::uint32_t clientId, std::uint32_t handle) {
  return Hids::close(clientId, handle);
}

std::uint32_t System::qvnDeleteHid(std::uint32_t handle) { return Hids::remove(handle); }

std::uint32_t System::qvnRegisterForReportsHid(std::uint32_t handle, const ReportRegistration& registration) {
  return Hids::withLive(handle, [&](HidObject& object) {
    if (!object.hasDevice()) return QRN_ERROR_INVALID_HANDLE;
    HidReportManager& manager = HidReportManager::getInstance();
    std::uint32_t rc = manager.registerForReports(handle, registration);
    if (rc != QRN_ERROR_SUCCESS) return rc;
    rc = resultOf([&] { return object.device().doRegisterForReports(registration); });
    if (rc != QRN_ERROR_SUCCESS) manager.unregisterForReports(handle, registration.clientId);
    return rc;
  });
}

std::uint32_t System::qvnUnregisterForReportsHid(std::uint32_t clientId, std::uint32_t handle) {
  HidReportManager::getInstance().unregisterForReports(handle, clientId);
  std::uint32_t rc = QRN_ERROR_SUCCESS;
  Hids::withLive(handle, [&](HidObject& object) {
    if (object.hasDevice()) rc = object.device().doUnregisterForReports(clientId);
    return rc;
  });
  return rc;
}

std::uint32_t System::qvnRegisterForNotificationsHid(std::uint32_t handle,
                                                     const NotificationRegistration& registration) {
  return HidNotificationManager::getInstance().registerClient(handle, registration);
}

std::uint32_t System::qvnUnregisterForNotificationsHid(std::uint32_t clientId, std::uint32_t handle) {
  return HidNotificationManager::getInstance().unregisterClient(clientId, handle);
}

std::uint32_t System::qvnGetLongHid(std::uint32_t handle, const char* key, std::uint32_t& value) {
  return getStoredLong<HidStore>(handle, key, value);
}

std::uint32_t System::qvnGetStringHid(std::uint32_t handle, const char* key, char* buffer,
                                      std::uint32_t bufferSize, std::uint32_t& required) {
  return getStoredString<HidStore>(handle, key, buffer, bufferSize, required);
}

std::uint32_t System::qvnGetCurrentStateHid(std::uint32_t handle, std::uint32_t& state) {
  return Hids::withAcquired(handle, [&](HidObject& object) {
    return object.hasDevice() ? object.device().doGetCurrentState(state) : QRN_ERROR_INVALID_HANDLE;
  });
}

}  // namespace qvn
