#include "printer/cpd/states/cpd_printer_open.h"

#include <utility>

#include "bidi/bidi_task.h"
#include "common/logging/basic_logger.h"
#include "device/connection.h"
#include "device/connection_use.h"
#include "device/notification.h"
#include "device/open_connection.h"
#include "device/visitor_run.h"
#include "printer/cpd/cpd_printer.h"
#include "printer/cpd/job/cpd_start_print_job_task.h"
#include "printer/cpd/states/cpd_printer_closed.h"
#include "printer/cpd/states/cpd_printer_print_canceled.h"
#include "printer/cpd/states/cpd_printer_printing.h"
#include "qvn/result_codes.h"
#include "qvn/transport/connection_manager.h"
#include "qvn/transport/visitor_manager.h"

namespace qvn {

const CpdPrinterOpen& CpdPrinterOpen::getInstance() {
  static const CpdPrinterOpen instance;
  return instance;
}

std::uint32_t CpdPrinterOpen::stateCode() const { return job_status::kIdle; }

std::uint32_t CpdPrinterOpen::doOpen(CpdPrinter& printer) const {
  printer.setOpenCount(printer.openCount() + 1);
  logDetail(log_component::server(), [&] {
    return LogText() << "CpdPrinterOpen::open(handle=" << printer.getHandle()
                     << ") new openCount=" << printer.openCount();
  });
  return QRN_ERROR_SUCCESS;
}

std::uint32_t CpdPrinterOpen::doClose(CpdPrinter& printer) const {
  if (printer.openCount() > 0) printer.setOpenCount(printer.openCount() - 1);
  logDetail(log_component::server(), [&] {
    return LogText() << "CpdPrinterOpen::doClose(handle=" << printer.getHandle()
                     << ") new openCount=" << printer.openCount();
  });
  if (printer.openCount() > 0) return QRN_ERROR_SUCCESS;

  const std::uint32_t rc = printer.closeConnections();
  printer.setState(CpdPrinterClosed::getInstance());
  return rc;
}

std::uint32_t CpdPrinterOpen::doStartJob(CpdPrinter& printer, const JobRequest& job) const {
  printer.sendJobStatus(job_status::kStartJob);
  const ConnectionUse connection(printer, connection_name::kPrint);
  OpenConnection print;
  std::uint32_t rc = print.open(printer, *connection);
  if (rc != QRN_ERROR_SUCCESS) return rc;

  printer.jobDescription().start(job);
  rc = CpdStartPrintJobTask(printer, *connection).execute();
  if (rc != QRN_ERROR_SUCCESS && rc != QRN_ERROR_BAD_COMMAND) return rc;
  printer.keepPrintConnection(std::move(print));
  printer.setBidiAllowed(false);
  if (rc == QRN_ERROR_BAD_COMMAND) {
    // The printer does not want the job: its client may send it all the same, into nothing.
    printer.setState(CpdPrinterPrintCanceled::getInstance());
  } else {
    printer.setState(CpdPrinterPrinting::getInstance());
    VisitorRun(printer, visitor_name::kStartJobPrinter).run(*connection);
  }
  return QRN_ERROR_SUCCESS;
}

std::uint32_t CpdPrinterOpen::doExchangeNpa(CpdPrinter& printer, Data& request, Data& response) const {
  const ConnectionUse connection(printer, connection_name::kBidi);
  return BidiTask(printer, *connection, request, response).execute();
}

}  // namespace qvn
