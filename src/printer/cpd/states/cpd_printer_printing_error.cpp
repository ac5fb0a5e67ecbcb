#include "printer/cpd/states/cpd_printer_printing_error.h"

#include "device/connection.h"
#include "device/job_description.h"
#include "device/notification.h"
#include "platform/base/clock.h"
#include "printer/cpd/cpd_printer.h"
#include "printer/cpd/states/cpd_printer_print_canceled.h"
#include "printer/cpd/states/cpd_printer_printing.h"
#include "qvn/result_codes.h"

namespace qvn {
namespace {

constexpr platform::Milliseconds kFullBufferPause = 1000;

}  // namespace

const CpdPrinterPrintingError& CpdPrinterPrintingError::getInstance() {
  static const CpdPrinterPrintingError instance;
  return instance;
}

std::uint32_t CpdPrinterPrintingError::stateCode() const { return job_status::kError; }

std::uint32_t CpdPrinterPrintingError::doPrint(CpdPrinter& printer, Data& request) const {
  printer.jobDescription().setDataSent();
  printer.printConnection().write(request);
  const std::uint32_t rc = request.getRc();
  if (rc == QRN_ERROR_SUCCESS) {
    printer.setState(CpdPrinterPrinting::getInstance());
  } else if (rc == QRN_ERROR_INSUFFICIENT_BUFFER) {
    platform::sleep(kFullBufferPause);
  }
  return rc;
}

std::uint32_t CpdPrinterPrintingError::doEndJob(CpdPrinter& printer) const { return endBrokenJob(printer); }

std::uint32_t CpdPrinterPrintingError::doCancelPrint(CpdPrinter& printer) const {
  printer.setState(CpdPrinterPrintCanceled::getInstance());
  return QRN_ERROR_SUCCESS;
}

}  // namespace qvn
