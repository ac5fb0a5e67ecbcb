#include "bidi/exchange_task.h"

#include "common/threads/runnable.h"
#include "common/threads/thread.h"
#include "qvn/result_codes.h"

namespace qvn {

ExchangeTask::ExchangeTask(Device& device, const Connection& connection, Data& request, Data& response)
    : request_(request), response_(response), device_(device), connection_(connection) {}

std::uint32_t ExchangeTask::runOnWorker() {
  MethodRunnable<ExchangeTask> runnable(*this, &ExchangeTask::runMethod);
  Thread thread(runnable);
  thread.startAndWait();
  std::uint32_t exitCode = 0;
  return thread.getExitCode(exitCode) ? exitCode : QRN_ERROR_SUCCESS;
}

}  // namespace qvn
