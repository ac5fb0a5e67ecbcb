#include "scanner/cpd/states/cpd_scanner_state.h"

#include "common/logging/basic_logger.h"
#include "qvn/result_codes.h"
#include "scanner/cpd/cpd_scanner.h"
#include "scanner/cpd/cpd_scanner_async_data_manager.h"
#include "scanner/cpd/states/cpd_scanner_closed.h"

namespace qvn {

CpdScannerState::~CpdScannerState() = default;

std::uint32_t CpdScannerState::refuse(CpdScanner& scanner, const char* label) const {
  logDetail(log_component::server(), [&] {
    return LogText() << name_ << label << scanner.getHandle() << "rc=QRN_ERROR_INVALID_FUNCTION.";
  });
  return QRN_ERROR_INVALID_FUNCTION;
}

std::uint32_t CpdScannerState::doOpen(CpdScanner& scanner) const {
  return refuse(scanner, "::doOpen(handle=");
}

std::uint32_t CpdScannerState::doClose(CpdScanner& /*scanner*/) const { return QRN_ERROR_SUCCESS; }

std::uint32_t CpdScannerState::doCancelJob(CpdScanner& scanner, std::uint32_t /*clientId*/) const {
  return refuse(scanner, "::doCancelJob(handle=");
}

std::uint32_t CpdScannerState::doStartJob(CpdScanner& scanner, std::uint32_t /*clientId*/,
                                          void* /*parameters*/) const {
  return refuse(scanner, "::doStartJob(handle=");
}

std::uint32_t CpdScannerState::doEndJob(CpdScanner& scanner) const {
  return refuse(scanner, "::doEndJob(handle=");
}

std::uint32_t CpdScannerState::doExchangeData(CpdScanner& scanner, std::uint32_t /*clientId*/,
                                              Data& /*command*/, Data& /*response*/) const {
  return refuse(scanner, "::doExchangeData(handle=");
}

std::uint32_t CpdScannerState::doExchangeData(CpdScanner& scanner, std::uint32_t /*clientId*/,
                                              Data& /*data*/) const {
  return refuse(scanner, "::doExchangeData(handle=");
}

std::uint32_t CpdScannerState::doRegisterForAsyncData(CpdScanner& scanner,
                                                      const AsyncDataRegistration& /*registration*/) const {
  return refuse(scanner, "::doRegisterForAsyncData(handle=");
}

std::uint32_t CpdScannerState::doUnregisterForAsyncData(CpdScanner& scanner,
                                                        std::uint32_t /*clientId*/) const {
  return refuse(scanner, "::doUnregisterForAsyncData(handle=");
}

void CpdScannerState::doAccept(CpdScanner& /*scanner*/, Data& data) const {
  data.setRc(QRN_ERROR_INVALID_FUNCTION);
}

std::uint32_t CpdScannerState::getStateValue() const { return 0; }

std::uint32_t CpdScannerState::doOnConnectionLost(CpdScanner& scanner) const {
  logDetail(log_component::server(), [&] {
    return LogText() << name_ << "::doOnConnectionLost(handle=" << scanner.getHandle()
                     << " rc=QRN_ERROR_INVALID_FUNCTION.";
  });
  return QRN_ERROR_INVALID_FUNCTION;
}

std::uint32_t CpdScannerOpenedState::doOpen(CpdScanner& scanner) const {
  scanner.setOpenCount(scanner.openCount() + 1);
  return QRN_ERROR_SUCCESS;
}

std::uint32_t CpdScannerOpenedState::doClose(CpdScanner& scanner) const {
  if (scanner.openCount() > 0) scanner.setOpenCount(scanner.openCount() - 1);
  if (scanner.openCount() > 0) return QRN_ERROR_SUCCESS;
  const std::uint32_t rc = scanner.closeBidi();
  scanner.setState(CpdScannerClosed::getInstance());
  return rc;
}

std::uint32_t CpdScannerOpenedState::doRegisterForAsyncData(CpdScanner& scanner,
                                                            const AsyncDataRegistration& registration) const {
  return CpdScannerAsyncDataManager::getInstance().registerForAsyncData(scanner.getHandle(), registration);
}

std::uint32_t CpdScannerOpenedState::doUnregisterForAsyncData(CpdScanner& scanner,
                                                              std::uint32_t clientId) const {
  return CpdScannerAsyncDataManager::getInstance().unregisterForAsyncData(scanner.getHandle(), clientId);
}

}  // namespace qvn
