#include "discovery/services_module.h"

#include <memory>

#include "platform/base/error.h"
#include "platform/process/module.h"

namespace qvn::ipv4 {

std::vector<Service> findServices(const std::string& name, ServiceDeadline deadline) {
  const std::string transport = platform::modulePath(reinterpret_cast<const void*>(&findServices));
  platform::ErrorCode error = platform::kSuccess;
  const auto module =
      platform::Module::load(transport.substr(0, transport.rfind('/') + 1) + kServicesModule, error);
  if (module == nullptr) return {};  // it was not built or installed, or D-Bus is not on this machine
  const auto find = reinterpret_cast<FindServices*>(module->find(kFindServicesSymbol, error));
  std::vector<Service> services;
  if (find != nullptr) find(name, deadline, services);
  return services;
}

}  // namespace qvn::ipv4
