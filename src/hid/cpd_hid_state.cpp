#include "hid/cpd_hid_state.h"

#include "common/logging/basic_logger.h"
#include "hid/cpd_hid.h"
#include "qvn/result_codes.h"

namespace qvn {
namespace {

std::uint32_t refuse(CpdHid& hid, const char* operation) {
  logDetail(log_component::serverHid(), [&] {
    return LogText() << "CpdHidState::" << operation << "(handle=" << hid.getHandle()
                     << "): rc=QRN_ERROR_INVALID_FUNCTION";
  });
  return QRN_ERROR_INVALID_FUNCTION;
}

}  // namespace

CpdHidState::~CpdHidState() = default;

void CpdHidState::doEnterState(CpdHid& hid) const {
  logDetail(log_component::serverHid(), [&] {
    return LogText() << "CpdHidState::doEnterState(handle=" << hid.getHandle() << ") state=" << name_;
  });
}

std::uint32_t CpdHidState::doRegisterForReports(CpdHid& hid,
                                                const ReportRegistration& /*registration*/) const {
  return refuse(hid, "doRegisterForReports");
}

std::uint32_t CpdHidState::doUnregisterForReports(CpdHid& hid, std::uint32_t /*clientId*/) const {
  return refuse(hid, "doUnregisterForReports");
}

}  // namespace qvn
