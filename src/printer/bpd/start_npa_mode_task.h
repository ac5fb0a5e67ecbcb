// StartNpaModeTask: puts a print channel into NPA mode.
#pragma once

#include "device/connection.h"
#include "device/printer.h"
#include "printer/job/print_job_task.h"

namespace qvn {

class StartNpaModeTask : public PrintJobTask {
 public:
  StartNpaModeTask(Printer& printer, const Connection& connection) : PrintJobTask(printer, connection) {}
  ~StartNpaModeTask() override = default;

 protected:
  std::uint32_t doExecute() override;
};

}  // namespace qvn
