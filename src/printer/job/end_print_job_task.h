// EndPrintJobTask: tells a printer that its job has ended.
#pragma once

#include "device/connection.h"
#include "device/printer.h"
#include "printer/job/print_job_task.h"

namespace qvn {

// Where no exchange is allowed there is nothing to tell: 0.
class EndPrintJobTask : public PrintJobTask {
 public:
  EndPrintJobTask(Printer& printer, const Connection& connection) : PrintJobTask(printer, connection) {}
  ~EndPrintJobTask() override = default;

 protected:
  std::uint32_t doExecute() override;
};

}  // namespace qvn
