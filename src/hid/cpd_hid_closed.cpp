#include "hid/cpd_hid_closed.h"

#include "common/logging/basic_logger.h"
#include "device/connection.h"
#include "device/connection_use.h"
#include "hid/cpd_hid.h"
#include "hid/cpd_hid_open.h"
#include "qvn/result_codes.h"
#include "qvn/transport/connection_manager.h"

namespace qvn {

const CpdHidClosed& CpdHidClosed::getInstance() {
  static const CpdHidClosed instance;
  return instance;
}

std::uint32_t CpdHidClosed::doOpen(CpdHid& hid) const {
  std::uint32_t rc = QRN_ERROR_SUCCESS;
  {
    const ConnectionUse connection(hid, connection_name::kAlert);
    rc = hid.openAlert(*connection);
    if (rc == QRN_ERROR_SUCCESS) {
      hid.setState(CpdHidOpen::getInstance());
      hid.setOpenCount(1);
    }
  }
  logDetail(log_component::serverHid(), [&] { return LogText() << " openCount=" << hid.openCount(); });
  return rc;
}

std::uint32_t CpdHidClosed::doClose(CpdHid& hid) const {
  logDetail(log_component::serverHid(), [&] {
    return LogText() << "CpdHidState:doClose(handle=" << hid.getHandle() << " openCount=" << hid.openCount();
  });
  return QRN_ERROR_SUCCESS;
}

}  // namespace qvn
