#include "printer/bpd/states/bpd_printer_state.h"

#include "bidi/bidi_task.h"
#include "common/clients/operation_lock.h"
#include "common/logging/basic_logger.h"
#include "device/connection.h"
#include "device/connection_use.h"
#include "device/notification.h"
#include "printer/bpd/bpd_printer.h"
#include "printer/bpd/job/bpd_end_print_job_task.h"
#include "printer/bpd/states/bpd_printer_closed.h"
#include "qvn/result_codes.h"
#include "qvn/transport/connection_manager.h"

namespace qvn {
namespace {

std::uint32_t refuse(BpdPrinter& printer, const char* operation, const char* answer) {
  logDetail(log_component::server(), [&] {
    return LogText() << "BpdPrinterState::" << operation << "(handle=" << printer.getHandle() << answer;
  });
  return QRN_ERROR_INVALID_FUNCTION;
}

constexpr char kRefused[] = ") rc=QRN_ERROR_INVALID_FUNCTION.";
constexpr char kExchangeRefused[] = ")rc=QRN_ERROR_INVALID_FUNCTION.";

}  // namespace

BpdPrinterState::~BpdPrinterState() = default;

std::uint32_t BpdPrinterState::stateCode() const { return job_status::kIdle; }

void BpdPrinterState::doEnterState(BpdPrinter& printer) const {
  logDetail(log_component::server(),
            [&] { return LogText() << name_ << "::doEnterState(handle=" << printer.getHandle(); });
}

std::uint32_t BpdPrinterState::doOpen(BpdPrinter& printer) const {
  printer.setOpenCount(printer.openCount() + 1);
  return QRN_ERROR_SUCCESS;
}

std::uint32_t BpdPrinterState::doClose(BpdPrinter& printer) const {
  const std::uint32_t count = printer.openCount();
  if (count == 0) return QRN_ERROR_SUCCESS;
  printer.setOpenCount(count - 1);
  if (count > 1) return QRN_ERROR_SUCCESS;
  // A job that nobody could end any more: what is left of it would be in the way of the next one.
  printer.closeConnections();
  printer.setState(BpdPrinterClosed::getInstance());
  return QRN_ERROR_SUCCESS;
}

std::uint32_t BpdPrinterState::doStartJob(BpdPrinter& printer, const JobRequest& /*job*/) const {
  return refuse(printer, "doStartJob", kRefused);
}

std::uint32_t BpdPrinterState::doPrint(BpdPrinter& printer, Data& /*request*/) const {
  return refuse(printer, "doPrint", kRefused);
}

std::uint32_t BpdPrinterState::doEndJob(BpdPrinter& printer) const {
  return refuse(printer, "doEndJob", kRefused);
}

std::uint32_t BpdPrinterState::doCancelPrint(BpdPrinter& printer) const {
  return refuse(printer, "doCancelPrint", kRefused);
}

std::uint32_t BpdPrinterState::doExchangeNpa(BpdPrinter& printer, Data& /*request*/,
                                             Data& /*response*/) const {
  return refuse(printer, "doExchangeNpa", kExchangeRefused);
}

std::uint32_t BpdPrinterState::exchange(BpdPrinter& printer, Data& request, Data& response) {
  const ConnectionUse connection(printer, connection_name::kBidi);
  return BidiTask(printer, *connection, request, response).execute();
}

std::uint32_t BpdPrinterState::runEndJobTask(BpdPrinter& printer) {
  const std::uint32_t rc =
      resultOf([&] { return BpdEndPrintJobTask(printer, printer.printConnection()).execute(); });
  printer.closePrintConnection();
  return rc;
}

}  // namespace qvn
