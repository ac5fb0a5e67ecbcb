#include "printer/bpd/states/bpd_printer_printing_error.h"

#include "common/logging/basic_logger.h"
#include "device/connection.h"
#include "printer/bpd/bpd_printer.h"
#include "printer/bpd/states/bpd_printer_open.h"
#include "printer/bpd/states/bpd_printer_print_canceled.h"
#include "printer/bpd/states/bpd_printer_printing.h"
#include "qvn/result_codes.h"

namespace qvn {

const BpdPrinterPrintingError& BpdPrinterPrintingError::getInstance() {
  static const BpdPrinterPrintingError instance;
  return instance;
}

std::uint32_t BpdPrinterPrintingError::doPrint(BpdPrinter& printer, Data& request) const {
  printer.printConnection().write(request);
  const std::uint32_t rc = request.getRc();
  if (rc == QRN_ERROR_SUCCESS) printer.setState(BpdPrinterPrinting::getInstance());
  return rc;
}

std::uint32_t BpdPrinterPrintingError::doEndJob(BpdPrinter& printer) const {
  const std::uint32_t rc = runEndJobTask(printer);
  printer.setState(BpdPrinterOpen::getInstance());
  return rc;
}

std::uint32_t BpdPrinterPrintingError::doCancelPrint(BpdPrinter& printer) const {
  logDetail(log_component::server(), [&] {
    return LogText() << "BpdPrinterPrintingError::doCancelPrint(handle=" << printer.getHandle();
  });
  printer.setState(BpdPrinterPrintCanceled::getInstance());
  return QRN_ERROR_SUCCESS;
}

}  // namespace qvn
