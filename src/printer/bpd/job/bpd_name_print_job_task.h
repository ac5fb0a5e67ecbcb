// BpdNamePrintJobTask: tells a Bpd printer whose job it prints.
#pragma once

#include "device/connection.h"
#include "device/printer.h"
#include "printer/job/print_job_task.h"

namespace qvn {

// Where no exchange is allowed there is nobody to tell: 0.
class BpdNamePrintJobTask : public PrintJobTask {
 public:
  BpdNamePrintJobTask(Printer& printer, const Connection& connection) : PrintJobTask(printer, connection) {}
  ~BpdNamePrintJobTask() override = default;

 protected:
  std::uint32_t doExecute() override;
};

}  // namespace qvn
