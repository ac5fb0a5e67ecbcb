#include "scanner/cpd/cpd_scan_bidi_task.h"

#include "common/logging/basic_logger.h"
#include "qvn/transport/visitor_manager.h"
#include "scanner/esc/esc_command_factory.h"

namespace qvn {

CpdScanBidiTask::CpdScanBidiTask(Device& scanner, const Connection& connection, Data& request, Data& response)
    : GenericBidiTask(scanner, connection, request, response, visitor_name::kEscCommand),
      command_(EscCommandFactory::getInstance().makeCommand(request)) {}

void CpdScanBidiTask::doUpdate(Data& data) {
  const std::lock_guard<std::mutex> lock(updateMutex_);
  if (command_ == nullptr) return;
  if (!command_->expectsResponse()) {
    detachFrom(device_);
    logDetail(log_component::server(), [] {
      return LogText() << "CpdScanBidiTask::doUpdate()"
                       << " no response expected";
    });
    command_.reset();
  } else if (command_->isResponse(data)) {
    response_ = data;
    detachFrom(device_);
    command_.reset();
    logDetail(log_component::server(), [&] {
      return (LogText() << "CpdScanBidiTask::doUpdate()"
                        << " handle=" << device_.getHandle() << " response=")
          .hex(response_);
    });
  }
}

}  // namespace qvn
