#include "printer/bpd/start_npa_mode_task.h"

#include "device/visitor_run.h"
#include "npa/npa_templates.h"
#include "qvn/transport/data.h"
#include "qvn/transport/visitor_manager.h"

namespace qvn {

std::uint32_t StartNpaModeTask::doExecute() {
  const auto& packet = npa_template::kEnterNpaMode;
  Data data(packet.data(), static_cast<std::uint32_t>(packet.size()));
  return VisitorRun(printer_, visitor_name::kStartNpaMode).run(connection_, &data);
}

}  // namespace qvn
