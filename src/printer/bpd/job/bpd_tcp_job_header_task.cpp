#include "printer/bpd/job/bpd_tcp_job_header_task.h"

#include <string>

#include "common/logging/trace_scope.h"
#include "device/job_description.h"
#include "device/visitor_run.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "qvn/transport/data.h"
#include "qvn/transport/visitor_manager.h"

namespace qvn {
namespace {

std::string headerText(Printer& printer, bool npaMode) {
  const JobRequest job = printer.jobDescription().request();
  const std::string attributes = printer.getAttributes();
  std::string queueNumber;
  std::uint32_t trueEndOfJob = 0;
  AttributeCodec::getString(attributes, attribute::kQueueNumber, queueNumber);
  AttributeCodec::getLong(attributes, attribute::kTrueEndOfJob, trueEndOfJob);

  std::string text;
  AttributeCodec::setString(text, attribute::kHostName, job.hostName);
  AttributeCodec::setString(text, attribute::kJobName, job.jobName);
  AttributeCodec::setString(text, attribute::kUserName, job.userName);
  AttributeCodec::setString(text, attribute::kQueueName, job.queueName);
  AttributeCodec::setString(text, attribute::kQueueNumber, queueNumber);
  AttributeCodec::setLong(text, attribute::kSpoolerJobId, job.spoolerJobId);
  AttributeCodec::setLong(text, attribute::kNpaSupported, npaMode ? 1 : 0);
  AttributeCodec::setLong(text, attribute::kTrueEndOfJob, trueEndOfJob);
  return text;
}

}  // namespace

std::uint32_t BpdTcpJobHeaderTask::doExecute() {
  TraceScope trace(BasicLogger::getInstance(), log_component::server(),
                   [] { return LogText() << "BpdTcpJobHeaderTask::doExecute() "; });
  Data header(headerText(printer_, npaMode_));
  std::uint32_t rc = VisitorRun(printer_, visitor_name::kJobHeader).run(connection_, &header);
  if (rc == QRN_ERROR_INVALID_FUNCTION) rc = QRN_ERROR_SUCCESS;
  trace.setRc(rc);
  return rc;
}

}  // namespace qvn
