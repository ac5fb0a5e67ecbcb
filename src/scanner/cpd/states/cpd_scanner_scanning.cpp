#include "scanner/cpd/states/cpd_scanner_scanning.h"

#include "device/notification.h"
#include "qvn/result_codes.h"
#include "scanner/cpd/cpd_scanner.h"
#include "scanner/cpd/cpd_scanner_async_data_manager.h"
#include "scanner/cpd/states/cpd_scanner_cancel.h"
#include "scanner/esc/esc_commands.h"

namespace qvn {
namespace {

// Byte 3 of a status: the connection to the device was lost. The only one that the library itself makes.
constexpr std::size_t kStatusCode = 3;
constexpr std::uint8_t kConnectionLost = 0x0B;

}  // namespace

const CpdScannerScanning& CpdScannerScanning::getInstance() {
  static const CpdScannerScanning instance;
  return instance;
}

std::uint32_t CpdScannerScanning::doCancelJob(CpdScanner& scanner, std::uint32_t /*clientId*/) const {
  scanner.setState(CpdScannerCancel::getInstance());
  return QRN_ERROR_SUCCESS;
}

void CpdScannerScanning::doEnterState(CpdScanner& scanner) const {
  scanner.reportProgress(scan_progress::kStarted);
}

void CpdScannerScanning::doAccept(CpdScanner& scanner, Data& data) const {
  if (CpdScanner::isStatus(data)) scanner.endScan();
  CpdScannerAsyncDataManager::getInstance().accept(scanner.getHandle(), data);
}

std::uint32_t CpdScannerScanning::doOnConnectionLost(CpdScanner& scanner) const {
  scanner.endScan();
  PStatusEscCommand status;
  status.getBuffer()[kStatusCode] = kConnectionLost;
  CpdScannerAsyncDataManager::getInstance().accept(scanner.getHandle(), status);
  return QRN_ERROR_SUCCESS;
}

}  // namespace qvn
