// BpdEndPrintJobTask: tells a Bpd printer that its job has ended.
#pragma once

#include "device/connection.h"
#include "device/printer.h"
#include "printer/job/end_print_job_task.h"

namespace qvn {

class BpdEndPrintJobTask : public EndPrintJobTask {
 public:
  BpdEndPrintJobTask(Printer& printer, const Connection& connection) : EndPrintJobTask(printer, connection) {}
  ~BpdEndPrintJobTask() override = default;

 protected:
  std::uint32_t doExecute() override;
};

}  // namespace qvn
