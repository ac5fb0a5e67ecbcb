#include "device/hid.h"

#include "common/logging/basic_logger.h"
#include "device/store/hid_store.h"
#include "qvn/result_codes.h"

namespace qvn {

Hid::Hid() : ConnectedDevice("Hid") {}
Hid::~Hid() = default;

std::uint32_t Hid::doRegisterForReports(const ReportRegistration& /*registration*/) {
  return QRN_ERROR_INVALID_FUNCTION;
}
std::uint32_t Hid::doUnregisterForReports(std::uint32_t /*clientId*/) { return QRN_ERROR_INVALID_FUNCTION; }
std::uint32_t Hid::doGetCurrentState(std::uint32_t& /*state*/) { return QRN_ERROR_INVALID_FUNCTION; }
std::uint32_t Hid::doSetCurrentState(std::uint32_t /*state*/) { return QRN_ERROR_INVALID_FUNCTION; }

void Hid::shutDown() {}

Connection Hid::doGetConnection(const std::string& connectionName) {
  logDetail(log_component::serverHid(),
            [&] { return LogText() << "Hid::doGetConnection()" << connectionName; });
  return ConnectedDevice::doGetConnection(connectionName);
}

void Hid::doUpdate() {
  const std::string text = getAttributes();
  storeReported(text, [&] { return HidStore::getInstance().persist(text); });
}

}  // namespace qvn
