#include "scanner/cpd/states/cpd_scanner_open.h"

#include "device/connection_use.h"
#include "qvn/result_codes.h"
#include "qvn/transport/connection_manager.h"
#include "scanner/cpd/cpd_scan_bidi_task.h"
#include "scanner/cpd/cpd_scanner.h"
#include "scanner/cpd/states/cpd_scanner_scanning.h"
#include "scanner/esc/esc_commands.h"

namespace qvn {

const CpdScannerOpen& CpdScannerOpen::getInstance() {
  static const CpdScannerOpen instance;
  return instance;
}

std::uint32_t CpdScannerOpen::doStartJob(CpdScanner& scanner, std::uint32_t /*clientId*/,
                                         void* /*parameters*/) const {
  const CpdScanner::Start start(scanner);
  HScanGoEscCommand go;
  const std::uint32_t rc = scanner.send(go);
  if (rc == QRN_ERROR_SUCCESS) scanner.setState(CpdScannerScanning::getInstance());
  return rc;
}

std::uint32_t CpdScannerOpen::doExchangeData(CpdScanner& scanner, std::uint32_t /*clientId*/, Data& command,
                                             Data& response) const {
  const ConnectionUse connection(scanner, connection_name::kBidi);
  return CpdScanBidiTask(scanner, *connection, command, response).execute();
}

std::uint32_t CpdScannerOpen::doExchangeData(CpdScanner& scanner, std::uint32_t /*clientId*/,
                                             Data& data) const {
  return scanner.send(data);
}

void CpdScannerOpen::doEnterState(CpdScanner& scanner) const {
  scanner.notify(scanner.getHandle(), std::string(name()));
}

void CpdScannerOpen::doAccept(CpdScanner& scanner, Data& data) const {
  // The first data of a scan may be faster than the thread that starts it.
  scanner.waitForStart();
  if (scanner.isIn(*this)) {
    scanner.notify(data);
  } else {
    scanner.doAccept(data);
  }
}

}  // namespace qvn
