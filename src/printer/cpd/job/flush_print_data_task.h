// FlushPrintDataTask: makes the transport throw away the print data that it still holds.
#pragma once

#include "device/connection.h"
#include "device/printer.h"
#include "printer/job/print_job_task.h"

namespace qvn {

class FlushPrintDataTask : public PrintJobTask {
 public:
  FlushPrintDataTask(Printer& printer, const Connection& connection) : PrintJobTask(printer, connection) {}
  ~FlushPrintDataTask() override = default;

 protected:
  std::uint32_t doExecute() override;
};

}  // namespace qvn
