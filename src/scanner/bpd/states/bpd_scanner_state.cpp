#include "scanner/bpd/states/bpd_scanner_state.h"

#include "common/clients/operation_lock.h"
#include "common/logging/basic_logger.h"
#include "qvn/result_codes.h"
#include "scanner/bpd/bpd_scan_async_data_task.h"
#include "scanner/bpd/bpd_scanner.h"
#include "scanner/bpd/states/bpd_scanner_closed.h"

namespace qvn {
namespace {

void trace(BpdScanner& scanner, const char* label, const char* result) {
  logDetail(log_component::server(), [&] {
    return LogText() << "BpdScannerState::" << label << scanner.getHandle() << ") rc=" << result;
  });
}

std::uint32_t refuse(BpdScanner& scanner, const char* label) {
  trace(scanner, label, "QRN_ERROR_INVALID_FUNCTION.");
  return QRN_ERROR_INVALID_FUNCTION;
}

}  // namespace

BpdScannerState::~BpdScannerState() = default;

std::uint32_t BpdScannerState::doOpen(BpdScanner& scanner) const { return refuse(scanner, "doOpen(handle="); }

std::uint32_t BpdScannerState::doClose(BpdScanner& scanner) const {
  return refuse(scanner, "doClose(handle=");
}

std::uint32_t BpdScannerState::doStartJob(BpdScanner& scanner, std::uint32_t /*clientId*/,
                                          void* /*parameters*/) const {
  return refuse(scanner, "doStartJob(handle=");
}

std::uint32_t BpdScannerState::doEndJob(BpdScanner& scanner, std::uint32_t /*clientId*/) const {
  return refuse(scanner, "doEndJob(handle=");
}

std::uint32_t BpdScannerState::doExchangeData(BpdScanner& scanner, std::uint32_t /*clientId*/,
                                              Data& /*command*/, Data& /*response*/) const {
  return refuse(scanner, "doExchangeData(handle=");
}

std::uint32_t BpdScannerState::doExchangeData(BpdScanner& scanner, std::uint32_t /*clientId*/,
                                              Data& /*data*/) const {
  return refuse(scanner, "doExchangeData(handle=");
}

std::uint32_t BpdScannerState::doRegisterForAsyncData(BpdScanner& scanner,
                                                      const AsyncDataRegistration& /*registration*/) const {
  return refuse(scanner, "doRegisterForAsyncData(handle=");
}

std::uint32_t BpdScannerState::doUnregisterForAsyncData(BpdScanner& scanner,
                                                        std::uint32_t /*clientId*/) const {
  return refuse(scanner, "doUnregisterForAsyncData(handle=");
}

void BpdScannerState::doEnterState(BpdScanner& scanner) const {
  trace(scanner, "doEnterState(handle=", "QRN_ERROR_SUCCESS.");
}

void BpdScannerState::doAccept(BpdScanner& scanner, Data& /*data*/) const {
  trace(scanner, "doAccept(handle=", "QRN_ERROR_SUCCESS.");
}

std::uint32_t BpdScannerOpenedState::doOpen(BpdScanner& scanner) const {
  scanner.setOpenCount(scanner.openCount() + 1);
  return QRN_ERROR_SUCCESS;
}

std::uint32_t BpdScannerOpenedState::doClose(BpdScanner& scanner) const {
  scanner.setOpenCount(scanner.openCount() - 1);
  if (scanner.openCount() > 0) return QRN_ERROR_SUCCESS;
  resultOf([&] {
    scanner.closeConnection();
    return QRN_ERROR_SUCCESS;
  });
  scanner.setState(BpdScannerClosed::getInstance());
  return QRN_ERROR_SUCCESS;
}

std::uint32_t BpdScannerOpenedState::doRegisterForAsyncData(BpdScanner& scanner,
                                                            const AsyncDataRegistration& registration) const {
  return scanner.asyncDataTask().registerClient(registration.clientId, registration.mask,
                                                registration.callback);
}

std::uint32_t BpdScannerOpenedState::doUnregisterForAsyncData(BpdScanner& scanner,
                                                              std::uint32_t clientId) const {
  return scanner.asyncDataTask().unregisterClient(clientId);
}

}  // namespace qvn
