#include "device/configuration_task.h"

#include <utility>

#include "device/visitor_run.h"

namespace qvn {

ConfigurationTask::ConfigurationTask(Device& device, const Connection& connection, std::string descriptor,
                                     const std::string& attributes)
    : device_(device), connection_(connection), descriptor_(std::move(descriptor)), attributes_(attributes) {}

std::uint32_t ConfigurationTask::doExecute() {
  return VisitorRun(device_, descriptor_).run(connection_, &attributes_);
}

}  // namespace qvn
