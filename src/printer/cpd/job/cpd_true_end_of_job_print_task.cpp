#include "printer/cpd/job/cpd_true_end_of_job_print_task.h"

#include "common/logging/basic_logger.h"
#include "common/settings/application_settings.h"
#include "common/settings/setting_table.h"
#include "device/notification.h"
#include "npa/job_commands.h"
#include "platform/base/clock.h"
#include "qvn/result_codes.h"
#include "qvn/transport/data.h"
#include "qvn/transport/notification.h"

namespace qvn {
namespace {

// Tick counts wrap.
bool hasReached(std::uint32_t deadline) {
  return static_cast<std::int32_t>(platform::tickCount() - deadline) >= 0;
}

}  // namespace

std::uint32_t CpdTrueEndOfJobPrintTask::doExecute() {
  if (queryPrinter_) {
    waitForCompletion();
  } else {
    logDetail(log_component::server(),
              [] { return LogText() << "CpdTrueEndOfJobPrintTask::doExecute: doQueryPrinter=false."; });
  }
  Notification record;
  record.handle = printer_.getHandle();
  record.category = job_status::kCategory;
  record.id = job_status::kTrueEndOfJob;
  printer_.notifyJobStatus(record);
  return QRN_ERROR_SUCCESS;
}

void CpdTrueEndOfJobPrintTask::waitForCompletion() {
  const std::uint32_t interval = longSetting(setting::kTeojInterval);
  const std::uint32_t deadline = platform::tickCount() + longSetting(setting::kTeojDuration);
  while (!hasReached(deadline)) {
    if (isJobComplete()) return;
    platform::sleep(interval);
  }
}

bool CpdTrueEndOfJobPrintTask::isJobComplete() {
  QueryJobsCompletedCommand query;
  Data reply;
  const std::uint32_t rc = exchange(query.packet(), reply);
  if (rc != QRN_ERROR_SUCCESS) {
    logError(log_component::server(), [&] { return LogText() << "QueryJobsCompleted failed, rc=" << rc; });
    return false;
  }
  logDetail(log_component::server(), [&] {
    return (LogText() << "QueryJobsCompleted response from printer handle=" << printer_.getHandle() << " ")
        .hex(reply);
  });
  return QueryJobsCompletedCommand::isJobComplete(reply);
}

}  // namespace qvn
