// StartPrintJobTask: tells a printer that a job begins and takes the job's id from its reply.
#pragma once

#include "device/connection.h"
#include "device/printer.h"
#include "printer/job/print_job_task.h"

namespace qvn {

// Without bidirectional exchange the job starts with the id 0.
class StartPrintJobTask : public PrintJobTask {
 public:
  StartPrintJobTask(Printer& printer, const Connection& connection) : PrintJobTask(printer, connection) {}
  ~StartPrintJobTask() override = default;

 protected:
  std::uint32_t doExecute() override;
};

}  // namespace qvn
