// CpdPrinterAlertTask: the alert task of a Cpd printer, which keeps the printer's cache up to date as well.
#pragma once

#include "printer/clients/printer_alert_task.h"
#include "qvn/transport/data.h"

namespace qvn {

class CpdPrinter;

class CpdPrinterAlertTask : public PrinterAlertTask {
 public:
  explicit CpdPrinterAlertTask(CpdPrinter& printer);
  ~CpdPrinterAlertTask() override = default;

 protected:
  using PrinterAlertTask::doUpdate;
  void doUpdate(Data& data) override;

 private:
  void updateCache(const Data& alert);

  CpdPrinter& cpdPrinter_;
};

}  // namespace qvn
