// BpdStartPrintJobTask: starts a job on a Bpd printer.
#pragma once

#include "device/connection.h"
#include "device/printer.h"
#include "printer/job/start_print_job_task.h"

namespace qvn {

class BpdStartPrintJobTask : public StartPrintJobTask {
 public:
  // `npaMode`: the printer takes NPA packets.
  BpdStartPrintJobTask(Printer& printer, const Connection& connection, bool npaMode)
      : StartPrintJobTask(printer, connection), npaMode_(npaMode) {}
  ~BpdStartPrintJobTask() override = default;

 protected:
  std::uint32_t doExecute() override;

 private:
  const bool npaMode_;
};

}  // namespace qvn
