#include "hid/cpd_hid.h"

#include "common/logging/trace_scope.h"
#include "hid/cpd_hid_closed.h"
#include "hid/hid_notification_manager.h"
#include "hid/hid_report_manager.h"
#include "qvn/result_codes.h"
#include "qvn/transport/connection_manager.h"

namespace qvn {

CpdHid::CpdHid() : TracedStateMachine(CpdHidClosed::getInstance(), "CpdHid", log_component::serverHid()) {
  state().doEnterState(*this);
}

// The transport's threads call this object.
CpdHid::~CpdHid() { CpdHid::shutDown(); }

void CpdHid::shutDown() {
  endReferences();
  if (wasUsed()) withState([this](const CpdHidState&) { return closeAlert(); });
}

std::uint32_t CpdHid::openAlert(const Connection& connection) {
  const std::uint32_t rc = alert_.openReceiving(*this, connection);
  if (rc == QRN_ERROR_SUCCESS) alert_.keep();
  return rc;
}

std::uint32_t CpdHid::closeAlert() { return alert_.close(connection_name::kAlert); }

std::uint32_t CpdHid::doOpen() {
  return tracedOpen([this](const CpdHidState& state) { return state.doOpen(*this); });
}

std::uint32_t CpdHid::doClose() {
  return traced("doClose", noDetails, [this](const CpdHidState& state) { return state.doClose(*this); });
}

std::uint32_t CpdHid::doRegisterForReports(const ReportRegistration& registration) {
  return tracedRegistration(
      "doRegisterForReports", ofClient(registration.clientId),
      [&](const CpdHidState& state) { return state.doRegisterForReports(*this, registration); });
}

std::uint32_t CpdHid::doUnregisterForReports(std::uint32_t clientId) {
  return tracedRegistration("doUnregisterForReports", ofClient(clientId), [&](const CpdHidState& state) {
    return state.doUnregisterForReports(*this, clientId);
  });
}

std::uint32_t CpdHid::doGetCurrentState(std::uint32_t& state) {
  state = stateValue_;
  logDetail(log_component::serverHid(), [&] { return LogText() << "ERROR_SUCCESS, state=" << state; });
  return QRN_ERROR_SUCCESS;
}

std::uint32_t CpdHid::doSetCurrentState(std::uint32_t state) {
  stateValue_ = state;
  logDetail(log_component::serverHid(), [&] { return LogText() << "ERROR_SUCCESS, state=" << state; });
  return QRN_ERROR_SUCCESS;
}

void CpdHid::doAccept(Data& report) {
  logDetail(log_component::serverHid(), [&] {
    return (LogText() << "CpdHid::doAccept(Data)"
                      << " handle=" << getHandle() << " data=")
        .hex(report);
  });
  HidReportManager::getInstance().accept(getHandle(), report);
}

std::uint32_t CpdHid::doAccept(Notification& notification) {
  logDetail(log_component::serverHid(), [&] {
    return LogText() << "CpdHid::doAccept(Notification)"
                     << " handle=" << getHandle() << " notificationId=" << notification.id;
  });
  notification.handle = getHandle();
  HidNotificationManager::getInstance().acceptNotification(notification);
  return doSetCurrentState(notification.id);
}

std::uint32_t CpdHid::doOnConnectionLost() {
  logDetail(log_component::serverHid(),
            [&] { return LogText() << "CpdHid::onConnectionLost() handle=" << getHandle(); });
  return QRN_ERROR_SUCCESS;
}

}  // namespace qvn
