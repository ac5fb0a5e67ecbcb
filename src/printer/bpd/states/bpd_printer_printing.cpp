#include "printer/bpd/states/bpd_printer_printing.h"

#include "common/logging/basic_logger.h"
#include "device/connection.h"
#include "device/job_description.h"
#include "printer/bpd/bpd_printer.h"
#include "printer/bpd/job/bpd_name_print_job_task.h"
#include "printer/bpd/states/bpd_printer_open.h"
#include "printer/bpd/states/bpd_printer_printing_error.h"
#include "qvn/result_codes.h"

namespace qvn {
namespace {

// Tells the printer whose job it is, before the first data goes out.
void nameJob(BpdPrinter& printer, const Data& firstRequest) {
  std::string account;
  if (printer.getAccountNumber(firstRequest, account) == QRN_ERROR_SUCCESS) {
    printer.jobDescription().setAccountNumber(account);
    logDetail(log_component::server(), [&] {
      return LogText() << "BpdPrinterPrinting(handle=" << printer.getHandle()
                       << ") Found account number:" << account;
    });
  }
  BpdNamePrintJobTask(printer, printer.printConnection()).execute();
}

}  // namespace

const BpdPrinterPrinting& BpdPrinterPrinting::getInstance() {
  static const BpdPrinterPrinting instance;
  return instance;
}

std::uint32_t BpdPrinterPrinting::doPrint(BpdPrinter& printer, Data& request) const {
  logDetail(log_component::server(),
            [&] { return LogText() << "BpdPrinterPrinting::doPrint(handle=" << printer.getHandle(); });
  if (!printer.isAccountSearched()) {
    printer.setAccountSearched(true);
    nameJob(printer, request);
  }
  printer.printConnection().write(request);
  const std::uint32_t rc = request.getRc();
  if (rc != QRN_ERROR_SUCCESS) printer.setState(BpdPrinterPrintingError::getInstance());
  return rc;
}

std::uint32_t BpdPrinterPrinting::doEndJob(BpdPrinter& printer) const {
  const std::uint32_t rc = runEndJobTask(printer);
  printer.setBidiAllowed(printer.isNpaMode());
  printer.setState(BpdPrinterOpen::getInstance());
  return rc;
}

// The channel has no way to stop what has begun: the job goes on to its end.
std::uint32_t BpdPrinterPrinting::doCancelPrint(BpdPrinter& printer) const {
  logDetail(log_component::server(),
            [&] { return LogText() << "BpdPrinterPrinting::doCancelPrint(handle=" << printer.getHandle(); });
  return QRN_ERROR_SUCCESS;
}

std::uint32_t BpdPrinterPrinting::doExchangeNpa(BpdPrinter& printer, Data& request, Data& response) const {
  return exchange(printer, request, response);
}

}  // namespace qvn
