// CpdStartPrintJobTask: starts a job on a Cpd printer: the device's lock, the date, then the job itself.
#pragma once

#include "device/connection.h"
#include "printer/cpd/cpd_printer.h"
#include "printer/job/start_print_job_task.h"

namespace qvn {

// 170 when another host holds the device's lock.
class CpdStartPrintJobTask : public StartPrintJobTask {
 public:
  CpdStartPrintJobTask(CpdPrinter& printer, const Connection& connection)
      : StartPrintJobTask(printer, connection), cpdPrinter_(printer) {}
  ~CpdStartPrintJobTask() override = default;

 protected:
  std::uint32_t doExecute() override;

 private:
  std::uint32_t lockDevice();
  void sendDate();

  CpdPrinter& cpdPrinter_;
};

}  // namespace qvn
