#include "printer/bpd/job/bpd_end_print_job_task.h"

#include "common/logging/trace_scope.h"
#include "printer/bpd/start_npa_mode_task.h"

namespace qvn {

std::uint32_t BpdEndPrintJobTask::doExecute() {
  TraceScope trace(BasicLogger::getInstance(), log_component::server(),
                   [] { return LogText() << "BpdEndPrintJobTask::doExecute()"; });
  const std::uint32_t rc = EndPrintJobTask::doExecute();
  if (printer_.isBidiAllowed()) StartNpaModeTask(printer_, connection_).execute();
  trace.setRc(rc);
  return rc;
}

}  // namespace qvn
