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

std::vector<RegisteredTransport> requireTransports(const std::string& kindOrName) {
  const auto all = registeredTransports();
  if (all.empty()) throw Failure("no transport is registered: run 'qvn install'");
  const bool isKind = kindOrName.ends_with("_TRANSPORT");
  auto wanted = registeredTransports(kindOrName);
  if (!wanted.empty() || isKind) return wanted;
  std::string names;
  for (const RegisteredTransport& transport : all) names += (names.empty() ? "" : ", ") + transport.name;
  throw UsageError("no transport '" + kindOrName + "'; registered: " + names);
}

void requireLoadable(const std::string& module) {
  platform::ErrorCode error = platform::kSuccess;
  std::string reason;
  if (platform::Module::load(module, error, &reason) != nullptr) return;
  throw Failure("cannot load the module '" + module + "': " + withCode(reason, error));
}

void requireLoadable(const RegisteredTransport& transport) {
  platform::ErrorCode error = platform::kSuccess;
  std::string reason;
  if (platform::Module::load(transport.module, error, &reason) != nullptr) return;
  const std::string itsModule = transport.name + ": its module " + transport.module;
  if (error == platform::kModuleNotFound) throw Failure(itsModule + withCode(" was not found", error));
  const char* const changeable = error == platform::kAccessDenied ? " can be changed by others: " : ": ";
  throw Failure(itsModule + changeable + withCode(reason, error));
}

}  // namespace qvn::cli
