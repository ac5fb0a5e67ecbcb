#include "printer/cpd/states/cpd_printer_closed.h"

#include "device/connection_use.h"
#include "device/notification.h"
#include "printer/cpd/cpd_printer.h"
#include "printer/cpd/states/cpd_printer_open.h"
#include "qvn/result_codes.h"
#include "qvn/transport/connectable.h"
#include "qvn/transport/connection_manager.h"

namespace qvn {

const CpdPrinterClosed& CpdPrinterClosed::getInstance() {
  static const CpdPrinterClosed instance;
  return instance;
}

std::uint32_t CpdPrinterClosed::stateCode() const { return job_status::kIdle; }

std::uint32_t CpdPrinterClosed::doOpen(CpdPrinter& printer) const {
  const ConnectionUse connection(printer, connection_name::kBidi);
  const std::uint32_t rc = connection->open();
  if (rc == QRN_ERROR_SUCCESS) {
    printer.setBidiAllowed(true);
    printer.changeState(CpdPrinterOpen::getInstance());
    printer.doPersistConnection(connection.get(), true);
    printer.setOpenCount(1);
  }
  return rc;
}

}  // namespace qvn
