#include "printer/cpd/cache_task.h"

#include "common/logging/trace_scope.h"
#include "common/tasks/observation.h"
#include "device/visitor_run.h"
#include "npa/job_commands.h"
#include "printer/cpd/cpd_printer_cache.h"
#include "qvn/result_codes.h"
#include "qvn/transport/visitor_manager.h"

namespace qvn {

std::uint32_t CacheTask::doExecute() {
  TraceScope trace(BasicLogger::getInstance(), log_component::server(),
                   [&] { return LogText() << "CacheTask::doExecute() handle=" << printer_.getHandle(); });
  VisitorRun visitor(printer_, visitor_name::kCache);
  received_ = false;
  std::uint32_t rc = QRN_ERROR_SUCCESS;
  {
    const Observation observation(*this, printer_);
    rc = visitor.run(connection_);
  }
  if (rc == QRN_ERROR_SUCCESS && !received_) rc = QRN_ERROR_TIMEOUT;
  trace.setRc(rc);
  return rc;
}

void CacheTask::doUpdate(Data& data) {
  const std::lock_guard<std::mutex> lock(updateMutex_);
  if (received_ || !GetCacheCommand().isReplyTo(data)) return;
  const auto reply = bytesOf(data);
  if (!output_.fill(reply.data(), data.getLength())) {
    logError(log_component::server(),
             [] { return LogText() << "CacheTask::doUpdate() insufficient buffer space"; });
    return;
  }
  removeNpaHeader(output_);
  received_ = true;
}

}  // namespace qvn
