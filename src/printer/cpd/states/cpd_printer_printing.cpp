#include "printer/cpd/states/cpd_printer_printing.h"

#include "common/clients/operation_lock.h"
#include "common/logging/basic_logger.h"
#include "device/connection.h"
#include "device/job_description.h"
#include "device/notification.h"
#include "printer/cpd/cpd_printer.h"
#include "printer/cpd/job/end_of_job_marker.h"
#include "printer/cpd/states/cpd_printer_open.h"
#include "printer/cpd/states/cpd_printer_print_canceled.h"
#include "printer/cpd/states/cpd_printer_printing_error.h"
#include "qvn/result_codes.h"

namespace qvn {

const CpdPrinterPrinting& CpdPrinterPrinting::getInstance() {
  static const CpdPrinterPrinting instance;
  return instance;
}

std::uint32_t CpdPrinterPrinting::stateCode() const { return job_status::kBusyPrinting; }

void CpdPrinterPrinting::doEnterState(CpdPrinter& printer) const {
  CpdPrinterState::doEnterState(printer);
  printer.setFirstDataSent(false);
}

std::uint32_t CpdPrinterPrinting::doPrint(CpdPrinter& printer, Data& request) const {
  JobDescription& job = printer.jobDescription();
  job.setDataSent();
  const bool complete = endsWithEndOfJobMarker(request);
  job.setComplete(complete);
  if (complete) {
    printer.setBidiAllowed(true);
    logDetail(log_component::server(),
              [&] { return LogText() << "Got EOJ marker in print data, handle=" << printer.getHandle(); });
  } else if (printer.isBidiAllowed()) {
    printer.setBidiAllowed(false);
  }
  printer.printConnection().write(request);
  if (!printer.isFirstDataSent()) {
    printer.setFirstDataSent(true);
    printer.sendJobStatus(job_status::kFirstData);
  }
  const std::uint32_t rc = request.getRc();
  if (rc != QRN_ERROR_SUCCESS) printer.setState(CpdPrinterPrintingError::getInstance());
  return rc;
}

std::uint32_t CpdPrinterPrinting::doEndJob(CpdPrinter& printer) const {
  printer.sendJobStatus(job_status::kEndJob);
  const std::uint32_t rc = resultOf([&] { return runEndJobTask(printer); });
  printer.closePrintConnection();
  printer.setState(CpdPrinterOpen::getInstance());
  return rc;
}

std::uint32_t CpdPrinterPrinting::doCancelPrint(CpdPrinter& printer) const {
  printer.setState(CpdPrinterPrintCanceled::getInstance());
  return QRN_ERROR_SUCCESS;
}

}  // namespace qvn
