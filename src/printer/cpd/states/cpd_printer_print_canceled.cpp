#include "printer/cpd/states/cpd_printer_print_canceled.h"

#include "common/logging/basic_logger.h"
#include "device/notification.h"
#include "printer/cpd/cpd_printer.h"
#include "printer/cpd/job/flush_print_data_task.h"
#include "printer/cpd/mwo.h"
#include "qvn/result_codes.h"

namespace qvn {

const CpdPrinterPrintCanceled& CpdPrinterPrintCanceled::getInstance() {
  static const CpdPrinterPrintCanceled instance;
  return instance;
}

std::uint32_t CpdPrinterPrintCanceled::stateCode() const { return job_status::kBusyPrinting; }

void CpdPrinterPrintCanceled::doEnterState(CpdPrinter& printer) const {
  CpdPrinterState::doEnterState(printer);
  if (printer.isWriterEnabled()) printer.writer().purge();
  FlushPrintDataTask(printer, printer.printConnection()).execute();
  printer.sendJobStatus(job_status::kCancelled);
}

std::uint32_t CpdPrinterPrintCanceled::doPrint(CpdPrinter& printer, Data& request) const {
  logDetail(log_component::server(),
            [&] { return LogText() << "CpdPrinterPrintCanceled::doPrint(handle=" << printer.getHandle(); });
  const std::uint32_t size = request.getLength();
  request.consume(size, false);
  request.setCount(size);
  return QRN_ERROR_SUCCESS;
}

std::uint32_t CpdPrinterPrintCanceled::doEndJob(CpdPrinter& printer) const { return endBrokenJob(printer); }

}  // namespace qvn
