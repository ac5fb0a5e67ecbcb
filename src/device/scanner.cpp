#include "device/scanner.h"

#include "common/logging/basic_logger.h"
#include "device/store/scanner_store.h"
#include "qvn/result_codes.h"

namespace qvn {

Scanner::Scanner() : ConnectedDevice("Scanner") {}
Scanner::~Scanner() = default;

std::uint32_t Scanner::doStartJob(std::uint32_t /*clientId*/, void* /*parameters*/) {
  return QRN_ERROR_INVALID_FUNCTION;
}
std::uint32_t Scanner::doEndJob(std::uint32_t /*clientId*/) { return QRN_ERROR_INVALID_FUNCTION; }
std::uint32_t Scanner::doCancelJob(std::uint32_t /*clientId*/) { return QRN_ERROR_INVALID_FUNCTION; }
std::uint32_t Scanner::doExchangeData(std::uint32_t /*clientId*/, Data& /*data*/) {
  return QRN_ERROR_INVALID_FUNCTION;
}
std::uint32_t Scanner::doExchangeData(std::uint32_t /*clientId*/, Data& /*command*/, Data& /*response*/) {
  return QRN_ERROR_INVALID_FUNCTION;
}
std::uint32_t Scanner::doRegisterForAsyncData(const AsyncDataRegistration& /*registration*/) {
  return QRN_ERROR_INVALID_FUNCTION;
}
std::uint32_t Scanner::doUnregisterForAsyncData(std::uint32_t /*clientId*/) {
  return QRN_ERROR_INVALID_FUNCTION;
}
void Scanner::waitForCallbacks(std::uint32_t /*clientId*/) {}
std::uint32_t Scanner::doGetCurrentState(std::uint32_t& /*state*/) { return QRN_ERROR_INVALID_FUNCTION; }

void Scanner::doAccept(Data& data) { data.setRc(QRN_ERROR_INVALID_FUNCTION); }

void Scanner::shutDown() {}

Connection Scanner::doGetConnection(const std::string& connectionName) {
  logDetail(log_component::server(),
            [&] { return LogText() << "Scanner::doGetConnection() " << connectionName; });
  return ConnectedDevice::doGetConnection(connectionName);
}

void Scanner::doUpdate() {
  const std::string text = getAttributes();
  storeReported(text, [&] { return ScannerStore::getInstance().update(text); });
}

}  // namespace qvn
