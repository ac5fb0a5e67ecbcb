#include "printer/bpd/states/bpd_printer_open.h"

#include <utility>

#include "common/logging/basic_logger.h"
#include "device/connection.h"
#include "device/connection_use.h"
#include "device/open_connection.h"
#include "device/visitor_run.h"
#include "printer/bpd/bpd_printer.h"
#include "printer/bpd/job/bpd_start_print_job_task.h"
#include "printer/bpd/start_npa_mode_task.h"
#include "printer/bpd/states/bpd_printer_closed.h"
#include "printer/bpd/states/bpd_printer_printing.h"
#include "qvn/result_codes.h"
#include "qvn/transport/connection_manager.h"
#include "qvn/transport/visitor_manager.h"

namespace qvn {
namespace {

std::uint32_t runWithNumber(BpdPrinter& printer, const Connection& connection, const char* visitor,
                            std::uint32_t number) {
  Data data(&number, sizeof number);
  return VisitorRun(printer, visitor).run(connection, &data);
}

// Tells the transport what will go through the print connection. Packets go on between the data only while
// somebody waits for alerts.
void prepareChannel(BpdPrinter& printer, const Connection& connection) {
  if (!printer.isNpaMode()) {
    runWithNumber(printer, connection, visitor_name::kSetNonNpaPrinter, 0);
    return;
  }
  const bool wrap = printer.areAlertsRegistered();
  if (runWithNumber(printer, connection, visitor_name::kSetNpaWrapMode, wrap ? 1 : 0) == QRN_ERROR_SUCCESS) {
    printer.setBidiAllowed(wrap);
  }
  StartNpaModeTask(printer, connection).execute();
}

}  // namespace

const BpdPrinterOpen& BpdPrinterOpen::getInstance() {
  static const BpdPrinterOpen instance;
  return instance;
}

std::uint32_t BpdPrinterOpen::doOpen(BpdPrinter& printer) const {
  printer.setOpenCount(printer.openCount() + 1);
  logDetail(log_component::server(), [&] {
    return LogText() << "BpdPrinterOpen::open(handle=" << printer.getHandle()
                     << ") openCount=" << printer.openCount();
  });
  return QRN_ERROR_SUCCESS;
}

std::uint32_t BpdPrinterOpen::doClose(BpdPrinter& printer) const {
  logDetail(log_component::server(), [&] {
    return LogText() << "+BpdPrinterOpen::doClose(handle=" << printer.getHandle()
                     << ") original openCount=" << printer.openCount();
  });
  if (printer.openCount() > 0) printer.setOpenCount(printer.openCount() - 1);
  if (printer.openCount() > 0) {
    logDetail(log_component::server(), [&] {
      return LogText() << "-BpdPrinterOpen::doClose(handle=" << printer.getHandle()
                       << ") new openCount=" << printer.openCount();
    });
    return QRN_ERROR_SUCCESS;
  }
  const std::uint32_t rc = printer.closeConnections();
  printer.setState(BpdPrinterClosed::getInstance());
  return rc;
}

std::uint32_t BpdPrinterOpen::doStartJob(BpdPrinter& printer, const JobRequest& job) const {
  logDetail(log_component::server(),
            [&] { return LogText() << "BpdPrinterOpen::doStartJob(handle=" << printer.getHandle(); });
  const ConnectionUse connection(printer, connection_name::kPrint);
  printer.jobDescription().start(job);
  OpenConnection print;
  std::uint32_t rc = print.open(printer, *connection);
  if (rc != QRN_ERROR_SUCCESS) return rc;

  prepareChannel(printer, *connection);
  rc = BpdStartPrintJobTask(printer, *connection, printer.isNpaMode()).execute();
  if (rc != QRN_ERROR_SUCCESS) return rc;
  printer.keepPrintConnection(std::move(print));
  printer.setState(BpdPrinterPrinting::getInstance());
  printer.setAccountSearched(false);
  return QRN_ERROR_SUCCESS;
}

std::uint32_t BpdPrinterOpen::doExchangeNpa(BpdPrinter& printer, Data& request, Data& response) const {
  return exchange(printer, request, response);
}

}  // namespace qvn
