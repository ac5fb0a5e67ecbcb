#include "printer/cpd/states/cpd_printer_state.h"

#include "common/clients/operation_lock.h"
#include "common/logging/basic_logger.h"
#include "device/connection.h"
#include "printer/cpd/cpd_printer.h"
#include "printer/cpd/job/cpd_end_print_job_task.h"
#include "printer/cpd/states/cpd_printer_closed.h"
#include "printer/cpd/states/cpd_printer_open.h"
#include "qvn/result_codes.h"

namespace qvn {
namespace {

std::uint32_t refuse(CpdPrinter& printer, const char* operation) {
  logDetail(log_component::server(), [&] {
    return LogText() << "CpdPrinterState::" << operation << "(handle=" << printer.getHandle()
                     << ") rc=QRN_ERROR_INVALID_FUNCTION.";
  });
  return QRN_ERROR_INVALID_FUNCTION;
}

}  // namespace

CpdPrinterState::~CpdPrinterState() = default;

void CpdPrinterState::doEnterState(CpdPrinter& printer) const { printer.sendJobStatus(stateCode()); }

std::uint32_t CpdPrinterState::doOpen(CpdPrinter& printer) const {
  printer.setOpenCount(printer.openCount() + 1);
  return QRN_ERROR_SUCCESS;
}

std::uint32_t CpdPrinterState::doClose(CpdPrinter& printer) const {
  const std::uint32_t count = printer.openCount();
  if (count == 0) return QRN_ERROR_SUCCESS;
  printer.setOpenCount(count - 1);
  if (count > 1) return QRN_ERROR_SUCCESS;
  // The job of a client that does not have the printer open: what is left of it would be in the way of the
  // next one.
  printer.writer().abandon();
  printer.closeConnections();
  printer.setState(CpdPrinterClosed::getInstance());
  return QRN_ERROR_SUCCESS;
}

std::uint32_t CpdPrinterState::doStartJob(CpdPrinter& printer, const JobRequest& /*job*/) const {
  return refuse(printer, "doStartJob");
}

std::uint32_t CpdPrinterState::doPrint(CpdPrinter& printer, Data& /*request*/) const {
  return refuse(printer, "doPrint");
}

std::uint32_t CpdPrinterState::doEndJob(CpdPrinter& printer) const { return refuse(printer, "doEndJob"); }

std::uint32_t CpdPrinterState::doCancelPrint(CpdPrinter& printer) const {
  return refuse(printer, "doCancelPrint");
}

std::uint32_t CpdPrinterState::doExchangeNpa(CpdPrinter& printer, Data& /*request*/,
                                             Data& /*response*/) const {
  return refuse(printer, "doExchangeNpa");
}

std::uint32_t CpdPrinterState::runEndJobTask(CpdPrinter& printer) {
  return CpdEndPrintJobTask(printer, printer.printConnection()).execute();
}

std::uint32_t CpdPrinterState::endBrokenJob(CpdPrinter& printer) {
  const std::uint32_t rc = resultOf([&] { return runEndJobTask(printer); });
  printer.closePrintConnection();
  printer.setState(CpdPrinterOpen::getInstance());
  return rc;
}

}  // namespace qvn
