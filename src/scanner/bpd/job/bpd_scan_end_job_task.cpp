#include "scanner/bpd/job/bpd_scan_end_job_task.h"

#include "bidi/object_store/store_messages.h"
#include "common/logging/basic_logger.h"
#include "common/tasks/observation.h"
#include "common/threads/event.h"
#include "platform/base/clock.h"
#include "qvn/result_codes.h"
#include "scanner/bpd/bpd_scanner.h"
#include "scanner/bpd/job/bpd_scan_job.h"
#include "scanner/bpd/job/scan_job_watchdog.h"
#include "scanner/bpd/scanner_object_store.h"

namespace qvn {
namespace {

constexpr platform::Milliseconds kCancelStep = 250;
constexpr platform::Milliseconds kExitWait = 4000;

}  // namespace

std::uint32_t BpdScanEndJobTask::doExecute() {
  event_.reset();
  if (scanner_.isScanning()) cancelJob();
  const Observation observation(*this, scanner_);
  const std::uint32_t exitCode = leaveHostMode();
  event_.wait(kExitWait);
  if (scanner_.job().isInHostMode()) {
    logDetail(log_component::server(), [] { return LogText() << "Host Mode not Exited"; });
    if (exitCode != QRN_ERROR_SUCCESS) return exitCode;
  }
  return endObservations();
}

void BpdScanEndJobTask::cancelJob() {
  scanner_.raise("Job.Cancelling");
  const std::uint32_t rc =
      scanner_.objectStore().exchange(callMethod(scanner_.job().objectName(), "cancel", nullptr));
  if (rc != QRN_ERROR_SUCCESS) {
    logDetail(log_component::server(),
              [&] { return LogText() << "BpdScanEndJobTask::doExecute() cancel rc=" << rc; });
  }
  if (cancel_) {
    scanner_.watchdog().setPhase(ScanPhase::Cancelling);
    while (scanner_.isScanning() && !scanner_.job().hasTimedOut()) platform::sleep(kCancelStep);
  }
  scanner_.job().setScanning(false);
}

std::uint32_t BpdScanEndJobTask::endObservations() {
  std::uint32_t result = QRN_ERROR_SUCCESS;
  const auto end = [&](const std::string& object, const char* event, const std::string& observer) {
    const std::uint32_t rc = scanner_.objectStore().exchange(removeObserver(object, event, observer));
    if (result == QRN_ERROR_SUCCESS) result = rc;
  };
  // A start that failed early has made no job to observe.
  if (const std::string& job = scanner_.job().objectName(); !job.empty()) {
    end(job, scan_object::kStateChanged, scanner_.jobObserver());
    end(job, scan_object::kPageScanned, scanner_.jobObserver());
  }
  end(scan_object::kSystem, scan_object::kSystemUpdate, scan_object::kSystemObserver);
  return result;
}

void BpdScanEndJobTask::takeSystemUpdate(const std::string& text) {
  if (text != "HostSend Exited") return;
  scanner_.job().setInHostMode(false);
  logDetail(log_component::server(),
            [] { return LogText() << "BpdScanAsyncDataTask::doUpdate() Host Mode Exited"; });
  event_.set();
}

}  // namespace qvn
