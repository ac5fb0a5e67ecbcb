#include "printer/job/print_job_task.h"

#include "bidi/bidi_task.h"

namespace qvn {

std::uint32_t PrintJobTask::exchange(Data& request, Data& reply) {
  return BidiTask(printer_, connection_, request, reply).execute();
}

}  // namespace qvn
