#include "bidi/bidi_task.h"

#include "common/logging/trace_scope.h"
#include "npa/npa_packet.h"
#include "qvn/result_codes.h"
#include "qvn/transport/visitor_manager.h"

namespace qvn {

BidiTask::BidiTask(Device& device, const Connection& connection, Data& request, Data& response)
    : ExchangeTask(device, connection, request, response) {}

std::uint32_t BidiTask::doExecute() {
  TraceScope trace(BasicLogger::getInstance(), log_component::server(),
                   [&] { return LogText() << "BidiTask::doExecute() handle=" << device_.getHandle(); });
  std::uint32_t rc = QRN_ERROR_INVALID_FUNCTION;
  if (!device_.isBidiAllowed()) {
    trace.logDetail(
        [] { return LogText() << "BidiTask::doExecute() Not currently supporting bidi, so return now"; });
  } else {
    rc = runOnWorker();
    if (rc == QRN_ERROR_SUCCESS && NpaPacket(response_).isRejected()) {
      rc = QRN_ERROR_BAD_COMMAND;
      trace.logDetail([&] { return (LogText() << " resp: ").hex(response_) << " command rejected"; });
    }
  }
  trace.setRc(rc);
  return rc;
}

std::uint32_t BidiTask::runMethod() {
  const std::uint32_t rc = exchange(visitor_name::kNpaData, [&] {
    logDetail(log_component::bidi(), [&] {
      return (LogText() << "BidiTask::runMethod() Device(" << device_.getHandle() << ") sent=").hex(request_);
    });
  });
  if (rc != QRN_ERROR_SUCCESS) {
    logDetail(log_component::bidi(), [&] {
      return LogText() << "BidiTask::runMethod() Device(" << device_.getHandle() << ") received no response";
    });
    return rc;
  }
  return request_.getRc();
}

void BidiTask::doUpdate(Data& data) {
  const std::lock_guard<std::mutex> lock(updateMutex_);
  if (!NpaPacket(data).isReplyTo(NpaPacket(request_))) return;
  response_ = data;
  // Later data is not taken for this exchange.
  detachFrom(device_);
  logDetail(log_component::bidi(), [&] {
    return (LogText() << "BidiTask::doUpdate() Device(" << device_.getHandle() << ") response=")
        .hex(response_);
  });
}

}  // namespace qvn
