#include "hid/cpd_hid_open.h"

#include <optional>

#include "common/logging/basic_logger.h"
#include "device/connection.h"
#include "device/connection_use.h"
#include "device/visitor_run.h"
#include "hid/cpd_hid.h"
#include "hid/cpd_hid_closed.h"
#include "qvn/result_codes.h"
#include "qvn/transport/connection_manager.h"
#include "qvn/transport/visitor_manager.h"

namespace qvn {

const CpdHidOpen& CpdHidOpen::getInstance() {
  static const CpdHidOpen instance;
  return instance;
}

std::uint32_t CpdHidOpen::doOpen(CpdHid& hid) const {
  std::optional<ConnectionUse> connection;  // given back after the visitor
  VisitorRun visitor(hid, visitor_name::kOpenHid);
  connection.emplace(hid, connection_name::kAlert);
  const std::uint32_t rc = visitor.run(**connection);
  // 1: a transport that has nothing to do for it.
  if (rc != QRN_ERROR_SUCCESS && rc != QRN_ERROR_INVALID_FUNCTION) return rc;
  hid.setOpenCount(hid.openCount() + 1);
  return QRN_ERROR_SUCCESS;
}

std::uint32_t CpdHidOpen::doClose(CpdHid& hid) const {
  hid.setOpenCount(hid.openCount() - 1);
  std::uint32_t rc = QRN_ERROR_SUCCESS;
  if (hid.openCount() == 0) {
    logDetail(log_component::serverHid(),
              [&] { return LogText() << "CpdHid::doClose(handle=" << hid.getHandle() << ") opencount=0"; });
    rc = hid.closeAlert();
    hid.setState(CpdHidClosed::getInstance());
  }
  logDetail(log_component::serverHid(), [&] {
    return LogText() << "CpdHidOpen::doClose(handle=" << hid.getHandle()
                     << "), openCount=" << hid.openCount();
  });
  return rc;
}

std::uint32_t CpdHidOpen::doRegisterForReports(CpdHid& hid, const ReportRegistration& registration) const {
  logDetail(log_component::serverHid(), [&] {
    return LogText() << "CpdHidOpen::doRegisterForReports(handle=" << hid.getHandle()
                     << ") clientId=" << registration.clientId;
  });
  return QRN_ERROR_SUCCESS;
}

std::uint32_t CpdHidOpen::doUnregisterForReports(CpdHid& hid, std::uint32_t clientId) const {
  logDetail(log_component::serverHid(), [&] {
    return LogText() << "CpdHidOpen::doUnregisterForReports(handle=" << hid.getHandle()
                     << ") clientId=" << clientId;
  });
  return QRN_ERROR_SUCCESS;
}

}  // namespace qvn
