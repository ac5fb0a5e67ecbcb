#include "scanner/bpd/states/bpd_scanner_open.h"

#include <string>

#include "common/exception.h"
#include "kit/tag_map.h"
#include "qvn/result_codes.h"
#include "scanner/bpd/bpd_scanner.h"
#include "scanner/bpd/job/bpd_scan_job.h"
#include "scanner/bpd/job/bpd_scan_start_job_task.h"
#include "scanner/bpd/job/job_parameter_store.h"
#include "scanner/bpd/job/scan_job_watchdog.h"
#include "scanner/bpd/states/bpd_scanner_scanning.h"

namespace qvn {

const BpdScannerOpen& BpdScannerOpen::getInstance() {
  static const BpdScannerOpen instance;
  return instance;
}

std::uint32_t BpdScannerOpen::doStartJob(BpdScanner& scanner, std::uint32_t clientId,
                                         void* /*parameters*/) const {
  if (scanner.job().isActive()) return QRN_ERROR_BUSY;
  scanner.setState(BpdScannerScanning::getInstance());
  try {
    scanner.beginJob(clientId);
  } catch (...) {
    scanner.setState(*this);
    throw;
  }
  return QRN_ERROR_SUCCESS;
}

std::uint32_t BpdScannerOpen::doExchangeData(BpdScanner& /*scanner*/, std::uint32_t clientId,
                                             Data& data) const {
  const TagMap entries(bytesAsText(data));
  const std::string* const key = entries.find("0");
  const std::string* const value = entries.find("1");
  if (key == nullptr || value == nullptr) return QRN_ERROR_INVALID_PARAMETER;
  return JobParameterStore::getInstance().setJobParameter(clientId, *key, *value);
}

std::uint32_t BpdScannerOpen::runMethod(BpdScanner& scanner) const {
  scanner.startJobData();
  std::uint32_t rc = QRN_ERROR_INTERNAL_ERROR;
  try {
    rc = scanner.startTask().execute();
    if (rc == QRN_ERROR_SUCCESS) scanner.watchdog().start(scanner.job().clientId());
  } catch (...) {
    rc = codeOfCurrentException();
  }
  if (rc != QRN_ERROR_SUCCESS) scanner.endFailedStart();
  return rc;
}

}  // namespace qvn
