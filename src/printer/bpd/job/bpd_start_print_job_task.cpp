#include "printer/bpd/job/bpd_start_print_job_task.h"

#include "common/logging/trace_scope.h"
#include "printer/bpd/job/bpd_tcp_job_header_task.h"

namespace qvn {

std::uint32_t BpdStartPrintJobTask::doExecute() {
  TraceScope trace(BasicLogger::getInstance(), log_component::server(), [&] {
    return LogText() << "BpdStartPrintJobTask::doExecute() handle=" << printer_.getHandle();
  });
  BpdTcpJobHeaderTask(printer_, connection_, npaMode_).execute();
  const std::uint32_t rc = StartPrintJobTask::doExecute();
  trace.setRc(rc);
  return rc;
}

}  // namespace qvn
