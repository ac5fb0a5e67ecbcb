#include "discovery/services_module.h"

#include <memory>
#include <string>

#include "base/transport_identity.h"
#include "platform/base/error.h"
#include "platform/process/module.h"
#include "qvn/transport/log.h"

namespace qvn::ipv4 {

std::vector<Service> findServices(const std::string& name, ServiceDeadline deadline) {
  const std::string transport = platform::modulePath(reinterpret_cast<const void*>(&findServices));
  platform::ErrorCode error = platform::kSuccess;
  std::string reason;
  const auto module =
      platform::Module::load(transport.substr(0, transport.rfind('/') + 1) + kServicesModule, error, &reason);
  if (module == nullptr) {  // it was not built or installed, or D-Bus is not on this machine
    transportLog(kDiscoveryLogComponent, log_level::kDetail, "no announced printers: " + reason);
    return {};
  }
  const auto find = reinterpret_cast<FindServices*>(module->find(kFindServicesSymbol, error));
  std::vector<Service> services;
  if (find != nullptr) find(name, deadline, services);
  return services;
}

}  // namespace qvn::ipv4
