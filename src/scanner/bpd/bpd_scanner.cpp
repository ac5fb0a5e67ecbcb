#include "scanner/bpd/bpd_scanner.h"

#include <utility>

#include "bidi/object_store/store_messages.h"
#include "bidi/xml/xml_visitor.h"
#include "common/logging/basic_logger.h"
#include "common/settings/application_settings.h"
#include "common/settings/setting_table.h"
#include "common/settings/settings_store.h"
#include "platform/base/clock.h"
#include "qvn/result_codes.h"
#include "qvn/transport/connection_manager.h"
#include "scanner/bpd/job/job_parameter_store.h"
#include "scanner/bpd/states/bpd_scanner_closed.h"
#include "scanner/bpd/states/bpd_scanner_open.h"
#include "scanner/bpd/states/bpd_scanner_scanning.h"

namespace qvn {
namespace {

constexpr platform::Milliseconds kEndSignalWait = 10000;

}  // namespace

BpdScanner::BpdScanner()
    : TracedStateMachine(BpdScannerClosed::getInstance(), "BpdScanner", log_component::server()),
      endJobMutex_(false, "", false),
      startRunnable_(*this, &BpdScanner::runStart),
      watchdog_(*this) {
  state().doEnterState(*this);
}

// The transport's threads call this object.
BpdScanner::~BpdScanner() { BpdScanner::shutDown(); }

void BpdScanner::shutDown() {
  endReferences();
  if (wasUsed()) {
    objectStore_.end();
    withState([this](const BpdScannerState&) {
      if (bidi_) closeConnection();
      setOpenCount(0);
      setState(BpdScannerClosed::getInstance());
    });
    watchdog_.waitForEnd();
  }
  asyncDataTask_.unregisterAll();
  asyncDataTask_.waitForCalls(0);
}

std::uint32_t BpdScanner::doOpen() {
  return tracedOpen([this](const BpdScannerState& state) { return state.doOpen(*this); });
}

std::uint32_t BpdScanner::doClose() {
  const std::uint32_t rc =
      traced("doClose", noDetails, [this](const BpdScannerState& state) { return state.doClose(*this); });
  // The last close has ended the registrations.
  asyncDataTask_.waitForCalls(0);
  return rc;
}

std::uint32_t BpdScanner::doStartJob(std::uint32_t clientId, void* parameters) {
  // The watchdog of the last job may be on its last steps; with the state lock it could not go on.
  if (!job_.isActive()) watchdog_.waitForEnd();
  return traced("doStartJob", ofClient(clientId),
                [&](const BpdScannerState& state) { return state.doStartJob(*this, clientId, parameters); });
}

std::uint32_t BpdScanner::doEndJob(std::uint32_t clientId) { return endJob(clientId, job_.number()); }

std::uint32_t BpdScanner::endJob(std::uint32_t clientId, std::uint32_t jobNumber) {
  refuseInCallback("the job's threads are not over");
  const MutexLock end(endJobMutex_, 0);
  if (!end.acquired()) return refuseEndJob(clientId);
  return traced("doEndJob", ofClient(clientId), [&](const BpdScannerState& state) {
    return jobNumber == job_.number() ? state.doEndJob(*this, clientId) : QRN_ERROR_INVALID_FUNCTION;
  });
}

std::uint32_t BpdScanner::refuseEndJob(std::uint32_t clientId) {
  const std::uint32_t owner = job_.clientId();
  logDetail(log_component::server(), [&] {
    LogText text;
    text << "BpdScannerScanning::doEndJob(handle=" << getHandle();
    if (clientId == owner) return text << ") end job already executing";
    return text << ") invalid client Id, expected:" << owner;
  });
  return clientId == owner ? QRN_ERROR_ACCESS_DENIED : QRN_ERROR_INVALID_PARAMETER;
}

std::uint32_t BpdScanner::doExchangeData(std::uint32_t clientId, Data& data) {
  return traced("doExchangeData", ofClient(clientId),
                [&](const BpdScannerState& state) { return state.doExchangeData(*this, clientId, data); });
}

std::uint32_t BpdScanner::doExchangeData(std::uint32_t clientId, Data& command, Data& response) {
  return traced("doExchangeData", ofClient(clientId), [&](const BpdScannerState& state) {
    return state.doExchangeData(*this, clientId, command, response);
  });
}

std::uint32_t BpdScanner::doRegisterForAsyncData(const AsyncDataRegistration& registration) {
  return tracedRegistration(
      "doRegisterForAsyncData", ofClient(registration.clientId),
      [&](const BpdScannerState& state) { return state.doRegisterForAsyncData(*this, registration); });
}

std::uint32_t BpdScanner::doUnregisterForAsyncData(std::uint32_t clientId) {
  return tracedRegistration(
      "doUnregisterForAsyncData", ofClient(clientId),
      [&](const BpdScannerState& state) { return state.doUnregisterForAsyncData(*this, clientId); });
}

void BpdScanner::waitForCallbacks(std::uint32_t clientId) { asyncDataTask_.waitForCalls(clientId); }

void BpdScanner::doAccept(Data& data) {
  const OperationLock::Turn turn(notifyLock_, Nested::Allowed);
  state().doAccept(*this, data);
  notify(data);
}

std::uint32_t BpdScanner::openConnection() {
  const Connection connection = doGetConnection(connection_name::kBidi);
  const std::uint32_t rc = bidi_.openReceiving(*this, connection);
  if (rc != QRN_ERROR_SUCCESS) {
    connection.release();
    return rc;
  }
  bidi_.keep();
  objectStore_.begin(connection);
  return QRN_ERROR_SUCCESS;
}

void BpdScanner::closeConnection() {
  // Nothing may use the connection any more once it has been released.
  const OpenConnection closing = std::move(bidi_);
  asyncDataTask_.unregisterAll();
  objectStore_.end();
  abortStart();
  job_.drop();
  watchdog_.stop();
}

void BpdScanner::raise(const std::string& event) {
  Data block("<" + event + ">");
  asyncDataTask().updateClients(block);
}

std::string BpdScanner::jobObserver() { return std::to_string(getHandle()) + "_Observer"; }

bool BpdScanner::isScanning() {
  if (job_.isScanning() && asyncDataTask().jobHasEnded()) job_.setScanning(false);
  return job_.isScanning();
}

std::uint32_t BpdScanner::timeoutMultiplier(std::uint32_t clientId) const {
  std::uint32_t multiplier = JobParameterStore::getInstance().getJobParameter(clientId, "TimeoutX");
  if (multiplier == 0) {
    multiplier = 1;
    ApplicationSettings().getLong(setting_key::kUsb1Settings, "Usb1BpdScanTimeoutMultiplier", multiplier,
                                  SettingsStore::kLocal);
  }
  return multiplier == 0 ? 1 : multiplier;
}

void BpdScanner::beginJob(std::uint32_t clientId) {
  startThread_.reset();
  job_.begin(clientId, JobParameterStore::getInstance().getJobParameter(clientId, "Track") != 0);
  startTask_ = std::make_unique<BpdScanStartJobTask>(*this, clientId, job_.objectName());
  job_.setActive(true);
  try {
    startThread_ = std::make_unique<Thread>(startRunnable_);
    const std::uint32_t multiplier = timeoutMultiplier(clientId);
    watchdog_.setMultiplier(multiplier);
    raise("TimeoutX=" + std::to_string(multiplier));
    startThread_->launch();
  } catch (...) {
    startThread_ = nullptr;
    job_.setActive(false);
    throw;
  }
}

std::uint32_t BpdScanner::runStart() { return BpdScannerOpen::getInstance().runMethod(*this); }

void BpdScanner::startJobData() {
  asyncDataTask().startJob(job_.clientId());
  job_.setScanning(true);
}

void BpdScanner::endFailedStart() {
  asyncDataTask().endJob();
  if (!startTask_->wasAborted()) raise("Scanner.CommError");
  watchdog_.stop();
  job_.setScanning(false);
  job_.setActive(false);
}

void BpdScanner::abortStart() {
  if (startThread_ == nullptr) return;
  startTask_->abort();
  // A reply that does not come is not waited for; a job that the device has started all the same ends with
  // the host mode.
  objectStore_.cancelExchanges();
  startThread_.reset();
  startTask_.reset();
}

void BpdScanner::finishOriginal(const std::string& jobObject) {
  // The name comes from the device; with markup in it the document would be another one.
  if (hasMarkup(jobObject)) return;
  objectStore_.sendInBackground(callMethod(jobObject + ".scanJob", "done", nullptr));
}

void BpdScanner::scanJobTimeout(std::uint32_t clientId) {
  const auto trace = [this](const char* what) {
    logDetail(log_component::server(),
              [&] { return LogText() << "BpdScanner::scanJobTimeout(handle=" << getHandle() << what; });
  };
  const std::uint32_t jobNumber = job_.number();
  if (!isScanning()) {
    trace(") not scanning");
    return;
  }
  BpdScanAsyncDataTask& task = asyncDataTask();
  if (!task.jobHasEnded()) {
    task.doScanAlertCallbacks(scan_data::kAlert, "Job.DataTimeout");
    task.doScanAlertCallbacks(scan_data::kAlert, "Scan.Error");
    task.endJob();
    task.doScanAlertCallbacks(scan_data::kAlert, "Job.End");
  }
  job_.setTimedOut();
  if (job_.waitForEndSignal(kEndSignalWait)) {
    trace(") end signal seen");
    return;
  }
  trace(") finish failed");
  endJob(clientId, jobNumber);
}

}  // namespace qvn
