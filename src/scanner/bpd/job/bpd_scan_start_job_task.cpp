#include "scanner/bpd/job/bpd_scan_start_job_task.h"

#include <memory>

#include "bidi/element/list_elem.h"
#include "bidi/element/map_elem.h"
#include "bidi/element/string_elem.h"
#include "bidi/object_store/received_message.h"
#include "bidi/object_store/store_messages.h"
#include "bidi/xml/xml_visitor.h"
#include "common/logging/basic_logger.h"
#include "common/tasks/observation.h"
#include "common/threads/event.h"
#include "platform/base/clock.h"
#include "qvn/result_codes.h"
#include "scanner/bpd/bpd_scanner.h"
#include "scanner/bpd/job/bpd_scan_job.h"
#include "scanner/bpd/job/scan_parameter_tree.h"
#include "scanner/bpd/scanner_object_store.h"

namespace qvn {
namespace {

constexpr platform::Milliseconds kHostModeWait = 15000;

// The result of a method that the device does not carry out now.
constexpr std::int32_t kRefused = -1;

}  // namespace

void BpdScanStartJobTask::abort() {
  aborted_ = true;
  event_.set();
}

std::uint32_t BpdScanStartJobTask::doExecute() {
  event_.reset();
  const Observation observation(*this, scanner_);
  std::uint32_t rc =
      exchange(addObserver(scan_object::kSystem, scan_object::kSystemUpdate, scan_object::kSystemObserver));
  if (rc != QRN_ERROR_SUCCESS) return rc;
  bool refused = false;
  rc = enterHostMode(refused);
  if (refused) return QRN_ERROR_BUSY;  // it is another host's
  using Step = std::uint32_t (BpdScanStartJobTask::*)();
  for (const Step step : {&BpdScanStartJobTask::waitForHostMode, &BpdScanStartJobTask::createJob,
                          &BpdScanStartJobTask::observeJob, &BpdScanStartJobTask::startJob}) {
    if (rc == QRN_ERROR_SUCCESS && aborted_) rc = QRN_ERROR_CANCELLED;
    if (rc == QRN_ERROR_SUCCESS) rc = (this->*step)();
  }
  // An aborted start leaves that to the end of the job.
  if (rc != QRN_ERROR_SUCCESS && !aborted_) leaveHostMode();
  return rc;
}

std::uint32_t BpdScanStartJobTask::exchange(const StoreMessage& message, std::string& response) {
  return scanner_.objectStore().exchange(message, response, &aborted_);
}

std::uint32_t BpdScanStartJobTask::exchange(const StoreMessage& message) {
  std::string response;
  return exchange(message, response);
}

std::uint32_t BpdScanStartJobTask::enterHostMode(bool& refused) {
  const auto parameters = makeScanParameterTree(clientId_);
  std::string response;
  const std::uint32_t rc =
      exchange(callMethod(scan_object::kSystem, "enterHostUSBSendMode", parameters.get()), response);
  refused = rc == QRN_ERROR_SUCCESS && responseResult(response) == kRefused;
  return rc;
}

std::uint32_t BpdScanStartJobTask::waitForHostMode() {
  // As long as data comes the device is still at work on something else.
  std::uint32_t count = scanner_.job().dataBlockCount();
  while (!event_.wait(kHostModeWait)) {
    const std::uint32_t now = scanner_.job().dataBlockCount();
    if (now == count) return QRN_ERROR_TIMEOUT;
    count = now;
  }
  return scanner_.job().isInHostMode() ? QRN_ERROR_SUCCESS : QRN_ERROR_TIMEOUT;
}

std::uint32_t BpdScanStartJobTask::createJob() {
  ListElem parameters;
  parameters.addChild(0, std::make_unique<StringElem>("HostSendJob"));
  parameters.addChild(1, makeScanParameterTree(clientId_));
  std::string response;
  const std::uint32_t rc = exchange(callMethod(scan_object::kJobFactory, "create", &parameters), response);
  if (rc != QRN_ERROR_SUCCESS) return rc;
  std::string name = classifyMessage(response).result;
  // With markup in it every document to the job would be another one.
  if (name.empty() || hasMarkup(name)) return QRN_ERROR_INTERNAL_ERROR;
  jobObjectName_ = std::move(name);
  return QRN_ERROR_SUCCESS;
}

std::uint32_t BpdScanStartJobTask::observeJob() {
  for (const char* event : {scan_object::kStateChanged, scan_object::kPageScanned}) {
    const std::uint32_t rc = exchange(addObserver(jobObjectName_, event, scanner_.jobObserver()));
    if (rc != QRN_ERROR_SUCCESS) return rc;
  }
  return QRN_ERROR_SUCCESS;
}

std::uint32_t BpdScanStartJobTask::startJob() {
  // What arrives from here on is the job's: it may all be there before the response has been looked at.
  scanner_.startJobData();
  std::string response;
  const std::uint32_t rc = exchange(callMethod(jobObjectName_, "start", nullptr), response);
  const std::int32_t result = responseResult(response);
  if (result == kExceptionResult || result == kRefused) return QRN_ERROR_INTERNAL_ERROR;
  return rc;
}

void BpdScanStartJobTask::takeSystemUpdate(const std::string& text) {
  const bool entered = text == "Enter HostSend OK";
  if (!entered && text != "Enter HostSend Fail") return;
  scanner_.job().setInHostMode(entered);
  logDetail(log_component::server(), [&] {
    return LogText() << "BpdScanAsyncDataTask::doUpdate: "
                     << (entered ? "entered Host Mode" : "Host Mode Failed");
  });
  event_.set();
}

}  // namespace qvn
