// BpdTcpJobHeaderTask: hands the transport what the spooler said of a job.
#pragma once

#include "device/connection.h"
#include "device/printer.h"
#include "printer/job/print_job_task.h"
#include "qvn/transport/observer.h"

namespace qvn {

// A transport without job headers (1) is as good as one that took it (0).
class BpdTcpJobHeaderTask : public PrintJobTask, public Observer {
 public:
  // `npaMode`: the printer takes NPA packets.
  BpdTcpJobHeaderTask(Printer& printer, const Connection& connection, bool npaMode)
      : PrintJobTask(printer, connection), npaMode_(npaMode) {}
  ~BpdTcpJobHeaderTask() override = default;

 protected:
  std::uint32_t doExecute() override;

 private:
  const bool npaMode_;
};

}  // namespace qvn
