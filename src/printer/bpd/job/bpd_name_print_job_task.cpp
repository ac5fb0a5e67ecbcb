#include "printer/bpd/job/bpd_name_print_job_task.h"

#include "common/logging/trace_scope.h"
#include "device/job_description.h"
#include "device/visitor_run.h"
#include "npa/job_commands.h"
#include "qvn/result_codes.h"
#include "qvn/transport/visitor_manager.h"

namespace qvn {
namespace {

// Where the job came from.
constexpr char kSourceChannel[] = "SC:TCP 9400;";

}  // namespace

std::uint32_t BpdNamePrintJobTask::doExecute() {
  if (!printer_.isBidiAllowed()) {
    logDetail(log_component::server(),
              [] { return LogText() << "BpdNamePrintJobTask::doExecute() Bidi is not allowed now"; });
    return QRN_ERROR_SUCCESS;
  }
  const JobDescription& job = printer_.jobDescription();
  const JobRequest request = job.request();
  NamePrintJobCommand command;
  command.setJobInfo(static_cast<std::uint16_t>(job.printerJobId()), request.hostName, request.jobName,
                     request.userName, request.queueName, job.accountNumber(), kSourceChannel);
  logDetail(log_component::server(),
            [&] { return (LogText() << "BpdNamePrintJobTask::doExecute() data=").hex(command.packet()); });
  return VisitorRun(printer_, visitor_name::kNamePrintJob).run(connection_, &command.packet());
}

}  // namespace qvn
