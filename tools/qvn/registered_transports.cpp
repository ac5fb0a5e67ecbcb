#include "registered_transports.h"

#include "common/settings/setting_table.h"
#include "library_settings.h"
#include "platform/base/error.h"
#include "platform/process/module.h"
#include "shared/client/failure.h"

namespace qvn::cli {

namespace {

constexpr std::pair<const char*, const char*> kKinds[] = {
    {setting_key::kLocalTransports, "LOCAL_TRANSPORT"},
    {setting_key::kNetworkTransports, "NETWORK_TRANSPORT"}};

}  // namespace

std::vector<RegisteredTransport> registeredTransports(const std::string& kindOrName) {
  std::vector<RegisteredTransport> transports;
  for (const auto& [key, kind] : kKinds) {
    for (const auto& [name, value] : listLibraryValues(key)) {
      if (kindOrName == "ALL_TRANSPORT" || kindOrName == kind || kindOrName == name) {
        transports.push_back({name, kind, value.data});
      }
    }
  }
  return transports;
}

void requireLoadable(const std::string& module) {
  platform::ErrorCode error = platform::kSuccess;
  std::string reason;
  if (platform::Module::load(module, error, &reason) == nullptr) {
    throw Failure("cannot load the module '" + module + "': " + reason, error);
  }
}

}  // namespace qvn::cli
