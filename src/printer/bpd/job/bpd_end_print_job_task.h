// BpdEndPrintJobTask: tells a Bpd printer that its job has ended.
#pragma once

#include "printer/job/end_print_job_task.h"

namespace qvn {

class BpdEndPrintJobTask : public EndPrintJobTask {
 public:
  BpdEndPrintJobTask(Printer& printer, Connectable& connection) : EndPrintJobTask(printer, connection) {}
  ~BpdEndPrintJobTask() override = default;

 protected:
  std::uint32_t doExecute() override;
};

}  // namespace qvn
