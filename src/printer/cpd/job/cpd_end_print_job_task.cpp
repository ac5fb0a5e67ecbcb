#include "printer/cpd/job/cpd_end_print_job_task.h"

#include "common/logging/trace_scope.h"
#include "common/settings/application_settings.h"
#include "common/settings/setting_table.h"
#include "device/job_description.h"
#include "device/printer.h"
#include "npa/job_commands.h"
#include "platform/base/clock.h"
#include "printer/cpd/job/cancel_print_job_task.h"
#include "printer/cpd/job/cpd_true_end_of_job_print_task.h"
#include "printer/cpd/job/job_cache_entry.h"
#include "qvn/result_codes.h"
#include "qvn/transport/data.h"

namespace qvn {
namespace {

constexpr int kMaxAttempts = 20;
constexpr platform::Milliseconds kAttemptInterval = 1500;

}  // namespace

std::uint32_t CpdEndPrintJobTask::doExecute() {
  TraceScope trace(BasicLogger::getInstance(), log_component::server(), [&] {
    return LogText() << "CpdEndPrintJobTask::doExecute() handle=" << printer_.getHandle();
  });
  const JobDescription& job = printer_.jobDescription();
  if (!job.isDataSent()) {
    trace.logDetail([] { return LogText() << " jobStarted = false"; });
  } else if (job.isComplete()) {
    trace.logDetail([] { return LogText() << " getJobComplete = true"; });
  } else {
    trace.logDetail([] { return LogText() << " getJobComplete = false"; });
    CancelPrintJobTask(printer_, connection_).execute();
  }

  printer_.setBidiAllowed(true);
  trace.logDetail([] { return LogText() << " Calling EndPrintJobTask::doExecute"; });
  std::uint32_t endRc = QRN_ERROR_SUCCESS;
  for (int attempt = 1; attempt <= kMaxAttempts; ++attempt) {
    if (job.printerJobId() == 0) {
      trace.logDetail([] { return LogText() << " not sending NPA since the printer job id is 0"; });
      endRc = QRN_ERROR_SUCCESS;
      break;
    }
    endRc = EndPrintJobTask::doExecute();
    if (endRc == QRN_ERROR_SUCCESS) break;
    trace.logDetail([&] { return LogText() << " endPrintJobTask failed rc=" << endRc; });
    if (attempt < kMaxAttempts) platform::sleep(kAttemptInterval);
  }
  if (endRc != QRN_ERROR_SUCCESS) {
    trace.logDetail([&] { return LogText() << " EndPrintJobTask::doExecute() rc=" << endRc; });
  }
  trace.logDetail([] { return LogText() << " calling CpdTrueEndOfJobPrintTask"; });
  const bool queryPrinter = endRc == QRN_ERROR_SUCCESS;
  const std::uint32_t rc = CpdTrueEndOfJobPrintTask(printer_, connection_, queryPrinter).execute();

  setJobCacheEntry(cpdPrinter_, false);
  if (longSetting(setting::kAioLockEnabled) != 0) {
    UnlockDeviceCommand command;
    Data reply;
    exchange(command.packet(), reply);
  }
  trace.setRc(rc);
  return rc;
}

}  // namespace qvn
