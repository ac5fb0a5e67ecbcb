// The exported functions of HID devices.
#include "api/device_exports.h"
#include "api/initialization.h"
#include "api/library_load.h"
#include "api/system.h"
#include "common/settings/localize.h"
#include "device/notification.h"
#include "qvn/qvn.h"
#include "qvn/transport/data.h"

using namespace qvn;

uint32_t QvnOpenHid(uint32_t clientId, uint32_t handle) {
  return deviceCall("QvnOpenHid", clientId, handle,
                    [&](ExitDetail&) { return System::qvnOpenHid(clientId, handle); });
}

uint32_t QvnCloseHid(uint32_t clientId, uint32_t handle) {
  return deviceCall("QvnCloseHid", clientId, handle,
                    [&](ExitDetail&) { return System::qvnCloseHid(clientId, handle); });
}

uint32_t QvnDeleteHid(uint32_t clientId, uint32_t handle) {
  return deviceCall("QvnDeleteHid", clientId, handle,
                    [&](ExitDetail&) { return System::qvnDeleteHid(handle); });
}

uint32_t QvnRegisterForReportsHid(uint32_t clientId, uint32_t handle, QvnHidReportCallback callback) {
  return deviceCall("QvnRegisterForReportsHid", clientId, handle, [&](ExitDetail&) {
    if (callback == nullptr) return QRN_ERROR_INVALID_FUNCTION;
    return System::qvnRegisterForReportsHid(handle, {clientId, callback});
  });
}

uint32_t QvnUnregisterForReportsHid(uint32_t clientId, uint32_t handle) {
  return deviceCall("QvnUnregisterForReportsHid", clientId, handle,
                    [&](ExitDetail&) { return System::qvnUnregisterForReportsHid(clientId, handle); });
}

uint32_t QvnRegisterForNotificationsHid(uint32_t clientId, uint32_t handle,
                                        QvnNotificationCallback callback) {
  return deviceCall("QvnRegisterForNotificationsHid", clientId, handle, [&](ExitDetail&) {
    if (callback == nullptr || clientId == 0) return QRN_ERROR_INVALID_PARAMETER;
    return System::qvnRegisterForNotificationsHid(handle, {clientId, hid_event::kCategory, Data(), callback});
  });
}

uint32_t QvnUnregisterForNotificationsHid(uint32_t clientId, uint32_t handle) {
  return deviceCall("QvnUnregisterForNotificationsHid", clientId, handle, [&](ExitDetail&) {
    if (clientId == 0) return QRN_ERROR_INVALID_PARAMETER;
    return System::qvnUnregisterForNotificationsHid(clientId, handle);
  });
}

uint32_t QvnGetLongHid(uint32_t clientId, uint32_t handle, const char* key, uint32_t* value) {
  const auto read = [&]() -> std::uint32_t {
    if (key == nullptr || value == nullptr) return QRN_ERROR_INVALID_PARAMETER;
    if (handle == 0) return QRN_ERROR_INVALID_HANDLE;
    return System::qvnGetLongHid(handle, key, *value);
  };
  const CallGate::Pass pass;
  if (!pass.entered()) {
    // The stored devices are there without the library being initialised.
    return guardedCall([&] {
      const Initialization::Hold hold;
      Localize::createInstance(moduleHandle());
      return read();
    });
  }
  return guardedCall([&] {
    const std::uint32_t rc = guardedCall(read);
    logDetail(log_component::server(), [&] {
      LogText text;
      text << "QvnGetLongHid(clientId=" << clientId << ", handle=" << handle << ", key=" << key
           << ") rc=" << rc;
      return value == nullptr ? text : (text << ", value=0x").radix(*value, 16);
    });
    return rc;
  });
}

uint32_t QvnGetStringHid(uint32_t clientId, uint32_t handle, const char* key, char* buffer,
                         uint32_t bufferSize, uint32_t* required) {
  return getStringCall("QvnGetStringHid", clientId, handle, key, buffer, bufferSize, required,
                       System::qvnGetStringHid);
}

uint32_t QvnGetCurrentStateHid(uint32_t clientId, uint32_t handle, uint32_t* state) {
  return currentStateCall("QvnGetCurrentStateHid", clientId, handle, state, ", state=",
                          [&](std::uint32_t& value) { return System::qvnGetCurrentStateHid(handle, value); });
}
