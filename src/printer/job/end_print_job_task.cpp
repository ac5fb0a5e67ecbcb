#include "printer/job/end_print_job_task.h"

#include "device/job_description.h"
#include "npa/job_commands.h"
#include "qvn/result_codes.h"
#include "qvn/transport/data.h"

namespace qvn {

std::uint32_t EndPrintJobTask::doExecute() {
  EndJobCommand command;
  command.setJobId(static_cast<std::uint16_t>(printer_.jobDescription().printerJobId()));
  Data reply;
  const std::uint32_t rc = exchange(command.packet(), reply);
  return rc == QRN_ERROR_INVALID_FUNCTION ? QRN_ERROR_SUCCESS : rc;
}

}  // namespace qvn
