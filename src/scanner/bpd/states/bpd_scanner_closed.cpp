#include "scanner/bpd/states/bpd_scanner_closed.h"

#include "qvn/result_codes.h"
#include "scanner/bpd/bpd_scanner.h"
#include "scanner/bpd/states/bpd_scanner_open.h"

namespace qvn {

const BpdScannerClosed& BpdScannerClosed::getInstance() {
  static const BpdScannerClosed instance;
  return instance;
}

std::uint32_t BpdScannerClosed::doOpen(BpdScanner& scanner) const {
  const std::uint32_t rc = scanner.openConnection();
  if (rc != QRN_ERROR_SUCCESS) return rc;
  scanner.setOpenCount(1);
  scanner.setState(BpdScannerOpen::getInstance());
  return QRN_ERROR_SUCCESS;
}

std::uint32_t BpdScannerClosed::doClose(BpdScanner& /*scanner*/) const { return QRN_ERROR_SUCCESS; }

}  // namespace qvn
