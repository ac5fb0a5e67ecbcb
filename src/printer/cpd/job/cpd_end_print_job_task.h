// CpdEndPrintJobTask: ends a job on a Cpd printer and waits until the printer is done with it.
#pragma once

#include "device/connection.h"
#include "printer/cpd/cpd_printer.h"
#include "printer/job/end_print_job_task.h"

namespace qvn {

// A job whose data did not end with the end-of-job marker is cancelled first.
class CpdEndPrintJobTask : public EndPrintJobTask {
 public:
  CpdEndPrintJobTask(CpdPrinter& printer, const Connection& connection)
      : EndPrintJobTask(printer, connection), cpdPrinter_(printer) {}
  ~CpdEndPrintJobTask() override = default;

 protected:
  std::uint32_t doExecute() override;

 private:
  CpdPrinter& cpdPrinter_;
};

}  // namespace qvn
