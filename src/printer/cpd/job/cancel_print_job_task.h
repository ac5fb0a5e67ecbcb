// CancelPrintJobTask: makes the printer drop a job that has no proper end, by sending zero bytes until it
// acknowledges the cancel.
#pragma once

#include <atomic>

#include "device/connection.h"
#include "device/printer.h"
#include "printer/job/print_job_task.h"
#include "qvn/transport/data.h"
#include "qvn/transport/observer.h"

namespace qvn {

// Sends at most 1 MiB. Always 0.
class CancelPrintJobTask : public PrintJobTask, public Observer {
 public:
  CancelPrintJobTask(Printer& printer, const Connection& connection) : PrintJobTask(printer, connection) {}
  ~CancelPrintJobTask() override = default;

 protected:
  std::uint32_t doExecute() override;
  using Observer::doUpdate;
  void doUpdate(Data& data) override;

 private:
  std::atomic<bool> acknowledged_{false};
};

}  // namespace qvn
