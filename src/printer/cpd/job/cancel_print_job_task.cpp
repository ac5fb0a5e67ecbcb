#include "printer/cpd/job/cancel_print_job_task.h"

#include "common/logging/trace_scope.h"
#include "common/tasks/observation.h"
#include "platform/base/clock.h"
#include "printer/cpd/cpd_printer_alert.h"
#include "qvn/result_codes.h"

namespace qvn {
namespace {

constexpr std::uint32_t kMaxPasses = 256;
constexpr std::uint32_t kBytesPerPass = 4096;
constexpr std::uint32_t kMaxFailures = 4;
constexpr platform::Milliseconds kPassInterval = 50;

}  // namespace

std::uint32_t CancelPrintJobTask::doExecute() {
  TraceScope trace(BasicLogger::getInstance(), log_component::server(),
                   [] { return LogText() << "CancelPrintJobTask"; });
  std::uint32_t passes = 0;
  {
    const Observation observation(*this, printer_);
    std::uint32_t total = 0;
    std::uint32_t failures = 0;
    for (; passes < kMaxPasses && !acknowledged_; ++passes) {
      Data zeros(kBytesPerPass, 0);
      connection_.write(zeros);
      const std::uint32_t written = zeros.getCount();
      if (written == 0 && ++failures > kMaxFailures) {
        logError(log_component::server(),
                 [] { return LogText() << "CancelPrintJobTask failed to send NULLs, bailing out"; });
        break;
      }
      total += written;
      logDetail(log_component::server(), [&] {
        return LogText() << "CancelPrintJobTask wrote " << written << " bytes, " << total << " bytes total";
      });
      platform::sleep(kPassInterval);
    }
  }
  if (acknowledged_) {
    logDetail(log_component::server(), [&] {
      return LogText() << "CancelPrintJobTask sent " << passes * (kBytesPerPass / 1024)
                       << "k of NULLs before getting response";
    });
  } else {
    logError(log_component::server(),
             [] { return LogText() << "Cancel Print Acknowledge alert never received from printer"; });
  }
  trace.setRc(QRN_ERROR_SUCCESS);
  return QRN_ERROR_SUCCESS;
}

void CancelPrintJobTask::doUpdate(Data& data) {
  if (!CpdPrinterAlert::isCancelPrintAcknowledge(data)) return;
  logDetail(log_component::server(), [] { return LogText() << "Received Cancel Print Acknowledged Alert"; });
  acknowledged_ = true;
}

}  // namespace qvn
