#include "printer/cpd/job/flush_print_data_task.h"

#include "common/logging/trace_scope.h"
#include "device/visitor_run.h"
#include "qvn/transport/visitor_manager.h"

namespace qvn {

std::uint32_t FlushPrintDataTask::doExecute() {
  TraceScope trace(BasicLogger::getInstance(), log_component::server(),
                   [] { return LogText() << "FlushPrintDataTask::doExecute: "; });
  const std::uint32_t rc = VisitorRun(printer_, visitor_name::kFlushPrintBuffer).run(connection_);
  trace.setRc(rc);
  return rc;
}

}  // namespace qvn
