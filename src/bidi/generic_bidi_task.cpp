#include "bidi/generic_bidi_task.h"

#include <utility>

#include "common/logging/trace_scope.h"
#include "qvn/result_codes.h"

namespace qvn {

GenericBidiTask::GenericBidiTask(Device& device, const Connection& connection, Data& request, Data& response,
                                 std::string visitorName)
    : ExchangeTask(device, connection, request, response), visitorName_(std::move(visitorName)) {}

std::uint32_t GenericBidiTask::doExecute() {
  TraceScope trace(BasicLogger::getInstance(), log_component::server(),
                   [] { return LogText() << "GenericBidiTask::doExecute()"; });
  const std::uint32_t rc = runOnWorker();
  trace.setRc(rc);
  return rc;
}

std::uint32_t GenericBidiTask::runMethod() {
  TraceScope trace(BasicLogger::getInstance(), log_component::server(),
                   [] { return LogText() << "GenericBidiTask::runMethod()"; });
  const std::uint32_t rc = exchange(visitorName_, [&] {
    logDetail(log_component::bidi(), [&] {
      return (LogText() << "GenericBidiTask::runMethod()"
                        << " handle=" << device_.getHandle() << " sent=")
          .hex(request_);
    });
  });
  if (rc != QRN_ERROR_SUCCESS) trace.logDetail([] { return LogText() << "Visitor failed"; });
  const std::uint32_t result = rc != QRN_ERROR_SUCCESS ? rc : request_.getRc();
  trace.setRc(result);
  return result;
}

}  // namespace qvn
