#include "scanner/bpd/states/bpd_scanner_scanning.h"

#include "common/clients/operation_lock.h"
#include "qvn/result_codes.h"
#include "scanner/bpd/bpd_scanner.h"
#include "scanner/bpd/job/bpd_scan_end_job_task.h"
#include "scanner/bpd/job/bpd_scan_job.h"
#include "scanner/bpd/job/job_parameter_store.h"
#include "scanner/bpd/job/scan_job_watchdog.h"
#include "scanner/bpd/states/bpd_scanner_open.h"

namespace qvn {

const BpdScannerScanning& BpdScannerScanning::getInstance() {
  static const BpdScannerScanning instance;
  return instance;
}

std::uint32_t BpdScannerScanning::doStartJob(BpdScanner& scanner, std::uint32_t clientId,
                                             void* parameters) const {
  if (scanner.job().isActive()) return QRN_ERROR_BUSY;
  return BpdScannerState::doStartJob(scanner, clientId, parameters);
}

std::uint32_t BpdScannerScanning::doEndJob(BpdScanner& scanner, std::uint32_t clientId) const {
  if (clientId != scanner.job().clientId()) return scanner.refuseEndJob(clientId);
  scanner.job().signalEnd();
  scanner.abortStart();
  JobParameterStore::getInstance().clearJobParameters(clientId);
  const bool cancel = scanner.isScanning() && !scanner.job().hasTimedOut();
  if (!cancel) scanner.watchdog().stop();
  const std::uint32_t rc = resultOf([&] { return BpdScanEndJobTask(scanner, cancel).execute(); });
  scanner.watchdog().stop();
  scanner.job().setScanning(false);
  if (rc != QRN_ERROR_SUCCESS) {
    scanner.raise("Scanner.CommError");
    return rc;
  }
  scanner.job().setActive(false);
  scanner.setState(BpdScannerOpen::getInstance());
  return QRN_ERROR_SUCCESS;
}

}  // namespace qvn
