#include "printer/cpd/cpd_printer_alert_task.h"

#include "common/logging/trace_scope.h"
#include "device/printer.h"
#include "npa/alert_layouts.h"
#include "npa/npa_packet.h"
#include "printer/cpd/cpd_printer.h"
#include "printer/cpd/cpd_printer_alert.h"

namespace qvn {

CpdPrinterAlertTask::CpdPrinterAlertTask(CpdPrinter& printer)
    : PrinterAlertTask(printer), cpdPrinter_(printer) {}

void CpdPrinterAlertTask::doUpdate(Data& data) {
  if (CpdPrinterAlert::isAny(data)) {
    TraceScope trace(BasicLogger::getInstance(), log_component::server(), [&] {
      return (LogText() << "CpdPrinterAlertTask::doUpdate(handle=" << printer_.getHandle() << ", alert=")
          .hex(data);
    });
    if (CpdPrinterAlert::isPowerOnReset(data)) {
      trace.logDetail([] { return LogText() << " POR alert"; });
      setRegistrationNeeded();
    } else if (CpdPrinterAlert::isStatus(data)) {
      trace.logDetail([] { return LogText() << " status alert"; });
      updateCache(data);
    }
  } else if (!NpaPacket(data).isAlert()) {
    logDetail(log_component::server(),
              [&] { return (LogText() << "The data is not a Cpd Printer Alert=").hex(data); });
  }
  PrinterAlertTask::doUpdate(data);
}

void CpdPrinterAlertTask::updateCache(const Data& alert) {
  if (cpdPrinter_.cache().getLength() == 0) {
    logDetail(log_component::server(), [] { return LogText() << " There is no stored cache to update"; });
    return;
  }
  logDetail(log_component::server(), [] { return LogText() << " updating existing cache"; });
  const CpdPrinterAlert status(alert);
  cpdPrinter_.updateCacheEntry(npa::kJobEntry.id, status.entry17());
  cpdPrinter_.updateCacheEntry(npa::kStatusWordEntry.id, status.entry18());
  logDetail(log_component::server(), [&] { return (LogText() << " new cache=").hex(cpdPrinter_.cache()); });
}

}  // namespace qvn
