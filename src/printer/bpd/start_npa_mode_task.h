// StartNpaModeTask: puts a print channel into NPA mode.
#pragma once

#include "device/printer.h"
#include "printer/job/print_job_task.h"
#include "qvn/transport/connectable.h"

namespace qvn {

class StartNpaModeTask : public PrintJobTask {
 public:
  StartNpaModeTask(Printer& printer, Connectable& connection) : PrintJobTask(printer, connection) {}
  ~StartNpaModeTask() override = default;

 protected:
  std::uint32_t doExecute() override;
};

}  // namespace qvn
