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

struct LoadFailure {
  platform::ErrorCode code = platform::kSuccess;
  std::string reason;
};

LoadFailure loadFailure(const std::string& module) {
  LoadFailure failure;
  platform::Module::load(module, failure.code, &failure.reason);
  return failure;
}

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
  const LoadFailure failure = loadFailure(module);
  if (failure.code == platform::kSuccess) return;
  throw Failure("cannot load the module '" + module + "': " + withCode(failure.reason, failure.code));
}

void requireLoadable(const RegisteredTransport& transport) {
  const LoadFailure failure = loadFailure(transport.module);
  if (failure.code == platform::kSuccess) return;
  const std::string itsModule = transport.name + ": its module " + transport.module;
  if (failure.code == platform::kModuleNotFound)
    throw Failure(withCode(itsModule + " was not found", failure.code));
  const char* const changeable =
      failure.code == platform::kAccessDenied ? " can be changed by others: " : ": ";
  throw Failure(itsModule + changeable + withCode(failure.reason, failure.code));
}

}  // namespace qvn::cli
