#include "scanner/cpd/states/cpd_scanner_end_job_pending.h"

#include "device/notification.h"
#include "qvn/result_codes.h"
#include "scanner/cpd/cpd_scanner.h"
#include "scanner/cpd/states/cpd_scanner_open.h"

namespace qvn {

const CpdScannerEndJobPending& CpdScannerEndJobPending::getInstance() {
  static const CpdScannerEndJobPending instance;
  return instance;
}

std::uint32_t CpdScannerEndJobPending::doCancelJob(CpdScanner& /*scanner*/,
                                                   std::uint32_t /*clientId*/) const {
  return QRN_ERROR_SUCCESS;
}

std::uint32_t CpdScannerEndJobPending::doEndJob(CpdScanner& scanner) const {
  scanner.reportProgress(scan_progress::kJobEnded);
  scanner.setState(CpdScannerOpen::getInstance());
  return QRN_ERROR_SUCCESS;
}

void CpdScannerEndJobPending::doEnterState(CpdScanner& scanner) const {
  scanner.reportProgress(scan_progress::kDataEnded);
}

}  // namespace qvn
