#include "printer/job/start_print_job_task.h"

#include "common/logging/trace_scope.h"
#include "device/job_description.h"
#include "npa/job_commands.h"
#include "qvn/result_codes.h"
#include "qvn/transport/data.h"

namespace qvn {
namespace {

// For printers whose reply carries no id.
constexpr std::uint32_t kDefaultJobId = 1;

}  // namespace

std::uint32_t StartPrintJobTask::doExecute() {
  TraceScope trace(BasicLogger::getInstance(), log_component::server(), [&] {
    return LogText() << "StartPrintJobTask::doExecute() handle=" << printer_.getHandle();
  });
  JobDescription& job = printer_.jobDescription();
  job.setPrinterJobId(0);
  StartJobCommand command;
  Data reply;
  std::uint32_t rc = exchange(command.packet(), reply);
  if (rc == QRN_ERROR_SUCCESS) {
    std::uint32_t id = kDefaultJobId;
    command.getJobId(reply, id);
    job.setPrinterJobId(id);
    trace.logDetail([&] { return LogText() << " PrinterJobId=" << id; });
  } else if (rc == QRN_ERROR_INVALID_FUNCTION) {
    rc = QRN_ERROR_SUCCESS;
  } else {
    logError(log_component::server(), [&] { return LogText() << "StartJobTask failed, rc=" << rc; });
  }
  trace.setRc(rc);
  return rc;
}

}  // namespace qvn
