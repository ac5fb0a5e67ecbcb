#include "scanner/cpd/cpd_scanner.h"

#include "common/clients/operation_lock.h"
#include "common/logging/basic_logger.h"
#include "common/settings/application_settings.h"
#include "common/settings/setting_table.h"
#include "device/connection_use.h"
#include "device/store/printer_table.h"
#include "printer/printer_object.h"
#include "qvn/result_codes.h"
#include "qvn/transport/connection_manager.h"
#include "qvn/transport/notification.h"
#include "scanner/cpd/cpd_scanner_async_data_manager.h"
#include "scanner/cpd/states/cpd_scanner_closed.h"
#include "scanner/cpd/states/cpd_scanner_end_job_pending.h"
#include "scanner/cpd/states/cpd_scanner_scanning.h"
#include "scanner/esc/esc_commands.h"

namespace qvn {
namespace {

// The handles of the parts of one device are that far apart.
constexpr std::uint32_t kPrinterHandleDistance = 400;

}  // namespace

CpdScanner::CpdScanner()
    : TracedStateMachine(CpdScannerClosed::getInstance(), "CpdScanner", log_component::server()),
      performanceNotifications_(longSetting(setting::kCpdScanPerformanceNotifications) != 0),
      cancelWaitDuration_(longSetting(setting::kScanCancelWaitDuration)),
      cancelEvent_(false, false, "", false) {
  state().doEnterState(*this);
}

// The transport's threads call this object.
CpdScanner::~CpdScanner() { CpdScanner::shutDown(); }

void CpdScanner::shutDown() {
  endReferences();
  if (wasUsed()) withState([this](const CpdScannerState&) { return closeBidi(); });
}

std::uint32_t CpdScanner::doOpen() {
  return tracedOpen([this](const CpdScannerState& state) { return state.doOpen(*this); });
}

std::uint32_t CpdScanner::doClose() {
  return traced("doClose", noDetails, [this](const CpdScannerState& state) { return state.doClose(*this); });
}

std::uint32_t CpdScanner::doStartJob(std::uint32_t clientId, void* parameters) {
  const auto details = [&] {
    return (ofClient(clientId)() << " parameters=").hex(&parameters, sizeof parameters);
  };
  return traced("doStartJob", details,
                [&](const CpdScannerState& state) { return state.doStartJob(*this, clientId, parameters); });
}

std::uint32_t CpdScanner::doEndJob(std::uint32_t /*clientId*/) {
  return traced("doEndJob", noDetails,
                [this](const CpdScannerState& state) { return state.doEndJob(*this); });
}

std::uint32_t CpdScanner::doCancelJob(std::uint32_t clientId) {
  return traced("doCancelJob", ofClient(clientId), [&](const CpdScannerState& state) {
    cancelEvent_.reset();
    return state.doCancelJob(*this, clientId);
  });
}

std::uint32_t CpdScanner::doExchangeData(std::uint32_t clientId, Data& data) {
  return traced("doExchangeData", ofClient(clientId),
                [&](const CpdScannerState& state) { return state.doExchangeData(*this, clientId, data); });
}

std::uint32_t CpdScanner::doExchangeData(std::uint32_t clientId, Data& command, Data& response) {
  return traced("doExchangeData", ofClient(clientId), [&](const CpdScannerState& state) {
    return state.doExchangeData(*this, clientId, command, response);
  });
}

std::uint32_t CpdScanner::doRegisterForAsyncData(const AsyncDataRegistration& registration) {
  return tracedRegistration(
      "doRegisterForAsyncData", ofClient(registration.clientId),
      [&](const CpdScannerState& state) { return state.doRegisterForAsyncData(*this, registration); });
}

std::uint32_t CpdScanner::doUnregisterForAsyncData(std::uint32_t clientId) {
  return tracedRegistration(
      "doUnregisterForAsyncData", ofClient(clientId),
      [&](const CpdScannerState& state) { return state.doUnregisterForAsyncData(*this, clientId); });
}

void CpdScanner::waitForCallbacks(std::uint32_t clientId) {
  CpdScannerAsyncDataManager::getInstance().waitForCallbacks(getHandle(), clientId);
}

std::uint32_t CpdScanner::doGetCurrentState(std::uint32_t& value) {
  value = state().getStateValue();
  logDetail(log_component::server(), [&] { return LogText() << "ERROR_SUCCESS, state=" << value; });
  return QRN_ERROR_SUCCESS;
}

void CpdScanner::doAccept(Data& data) { state().doAccept(*this, data); }

std::uint32_t CpdScanner::doOnConnectionLost() {
  waitForStart();
  return state().doOnConnectionLost(*this);
}

std::uint32_t CpdScanner::openBidi(const Connection& connection) {
  const std::uint32_t rc = bidi_.openReceiving(*this, connection);
  if (rc == QRN_ERROR_SUCCESS) bidi_.keep();
  return rc;
}

std::uint32_t CpdScanner::closeBidi() { return bidi_.close(connection_name::kBidi); }

std::uint32_t CpdScanner::send(Data& data) {
  const ConnectionUse connection(*this, connection_name::kBidi);
  return connection->write(data);
}

void CpdScanner::reportProgress(std::uint32_t id) {
  if (!performanceNotifications_) return;
  Notification record;
  record.handle = getHandle() - kPrinterHandleDistance;
  record.category = scan_progress::kCategory;
  record.id = id;
  if (const auto printer = PrinterTable::getInstance().find(record.handle)) printer->passNotification(record);
}

void CpdScanner::waitForStart() {
  if (!isStarting_) return;
  const OperationLock::Turn turn(stateLock(), Nested::Allowed);
}

void CpdScanner::endScan() {
  // Whoever ends a cancelled job holds the state lock while waiting for what has come here already.
  hasEnded_ = true;
  cancelEvent_.set();
  const OperationLock::Turn turn(stateLock(), Nested::Allowed);
  if (isIn(CpdScannerScanning::getInstance())) setState(CpdScannerEndJobPending::getInstance());
}

void CpdScanner::waitForLastStatus() {
  if (!hasEnded_) {
    refuseInCallback("the last status has not come");
    cancelEvent_.wait(cancelWaitDuration_);
  }
  logDetail(log_component::server(),
            [&] { return LogText() << "cancelWaitDuration_=" << cancelWaitDuration_ << "wait over."; });
}

bool CpdScanner::isStatus(const Data& data) {
  static const PStatusEscCommand status;
  return status.isA(data);
}

}  // namespace qvn
