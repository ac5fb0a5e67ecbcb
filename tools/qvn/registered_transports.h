// The transports in the registry, and why one of them does not load.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qvn::cli {

struct RegisteredTransport {
  std::string name;
  std::string kind;
  std::string module;
};

// Those that a kind or name covers, the local ones first. No exported function lists them.
std::vector<RegisteredTransport> registeredTransports(const std::string& kindOrName = "ALL_TRANSPORT");

// Those again; throws UsageError for a name that is no transport, and Failure when none is registered at all.
std::vector<RegisteredTransport> requireTransports(const std::string& kindOrName);

// Throws Failure with the reason when the system cannot load a module. The library, which uses the fallbacks
// then or answers a code, has the reason in its log only.
void requireLoadable(const std::string& module);
void requireLoadable(const RegisteredTransport& transport);

}  // namespace qvn::cli
