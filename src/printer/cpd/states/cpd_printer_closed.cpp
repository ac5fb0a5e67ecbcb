#include "printer/cpd/states/cpd_printer_closed.h"

#include <utility>

#include "device/connection.h"
#include "device/connection_use.h"
#include "device/notification.h"
#include "device/open_connection.h"
#include "printer/cpd/cpd_printer.h"
#include "printer/cpd/states/cpd_printer_open.h"
#include "qvn/result_codes.h"
#include "qvn/transport/connection_manager.h"

namespace qvn {

const CpdPrinterClosed& CpdPrinterClosed::getInstance() {
  static const CpdPrinterClosed instance;
  return instance;
}

std::uint32_t CpdPrinterClosed::stateCode() const { return job_status::kIdle; }

std::uint32_t CpdPrinterClosed::doOpen(CpdPrinter& printer) const {
  const ConnectionUse connection(printer, connection_name::kBidi);
  OpenConnection bidi;
  const std::uint32_t rc = bidi.open(printer, *connection);
  if (rc != QRN_ERROR_SUCCESS) return rc;
  printer.setBidiAllowed(true);
  printer.keepBidi(std::move(bidi));
  // Before clients are told of the state, who may open once more.
  printer.setOpenCount(1);
  printer.setState(CpdPrinterOpen::getInstance());
  return QRN_ERROR_SUCCESS;
}

}  // namespace qvn
