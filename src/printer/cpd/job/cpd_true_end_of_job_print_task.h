// CpdTrueEndOfJobPrintTask: waits until the printer reports that it has finished the job.
#pragma once

#include "device/connection.h"
#include "device/printer.h"
#include "printer/job/print_job_task.h"
#include "qvn/transport/observer.h"

namespace qvn {

// Asks every "TeojInterval" for at most "TeojDuration" milliseconds, then tells the clients that the job has
// truly ended. Always 0.
class CpdTrueEndOfJobPrintTask : public PrintJobTask, public Observer {
 public:
  CpdTrueEndOfJobPrintTask(Printer& printer, const Connection& connection, bool queryPrinter)
      : PrintJobTask(printer, connection), queryPrinter_(queryPrinter) {}
  ~CpdTrueEndOfJobPrintTask() override = default;

 protected:
  std::uint32_t doExecute() override;

 private:
  void waitForCompletion();
  bool isJobComplete();

  bool queryPrinter_;
};

}  // namespace qvn
