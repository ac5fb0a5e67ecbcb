#include "scanner/cpd/states/cpd_scanner_closed.h"

#include "device/connection_use.h"
#include "qvn/result_codes.h"
#include "qvn/transport/connection_manager.h"
#include "scanner/cpd/cpd_scanner.h"
#include "scanner/cpd/states/cpd_scanner_open.h"

namespace qvn {

const CpdScannerClosed& CpdScannerClosed::getInstance() {
  static const CpdScannerClosed instance;
  return instance;
}

std::uint32_t CpdScannerClosed::doOpen(CpdScanner& scanner) const {
  const ConnectionUse connection(scanner, connection_name::kBidi);
  const std::uint32_t rc = scanner.openBidi(*connection);
  if (rc != QRN_ERROR_SUCCESS) return rc;
  scanner.setState(CpdScannerOpen::getInstance());
  scanner.setOpenCount(1);
  return QRN_ERROR_SUCCESS;
}

void CpdScannerClosed::doEnterState(CpdScanner& scanner) const { scanner.setOpenCount(0); }

}  // namespace qvn
