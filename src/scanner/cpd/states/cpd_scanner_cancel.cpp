#include "scanner/cpd/states/cpd_scanner_cancel.h"

#include "common/logging/basic_logger.h"
#include "qvn/result_codes.h"
#include "scanner/cpd/cpd_scanner.h"
#include "scanner/cpd/cpd_scanner_async_data_manager.h"
#include "scanner/cpd/states/cpd_scanner_open.h"
#include "scanner/esc/esc_commands.h"

namespace qvn {

const CpdScannerCancel& CpdScannerCancel::getInstance() {
  static const CpdScannerCancel instance;
  return instance;
}

std::uint32_t CpdScannerCancel::doCancelJob(CpdScanner& /*scanner*/, std::uint32_t /*clientId*/) const {
  return QRN_ERROR_SUCCESS;
}

std::uint32_t CpdScannerCancel::doEndJob(CpdScanner& scanner) const {
  scanner.waitForLastStatus();
  scanner.setState(CpdScannerOpen::getInstance());
  return QRN_ERROR_SUCCESS;
}

void CpdScannerCancel::doEnterState(CpdScanner& scanner) const {
  HScanAbortEscCommand abort;
  const std::uint32_t rc = scanner.send(abort);
  if (rc == QRN_ERROR_SUCCESS) return;
  logDetail(log_component::server(),
            [&] { return LogText() << "error writing HScanAbortEscCommand rc=" << rc << "."; });
}

void CpdScannerCancel::doAccept(CpdScanner& scanner, Data& data) const {
  if (!CpdScanner::isStatus(data)) return;
  logDetail(log_component::server(), [&] {
    return LogText() << name() << "::doAccept(handle=" << scanner.getHandle() << "): got PStatus.";
  });
  CpdScannerAsyncDataManager::getInstance().accept(scanner.getHandle(), data);
  scanner.signalLastStatus();
}

}  // namespace qvn
