// The module that asks the mDNS daemon. It is no part of the transport's own, because what it stands on
// (D-Bus and more) is large and cannot be unloaded without leaving memory behind: it is loaded by the first
// search for services, from the directory of the transport, and stays in the process. Both are built
// together.
#pragma once

#include <string>
#include <vector>

#include "discovery/services.h"

namespace qvn::ipv4 {

inline constexpr char kServicesModule[] = "qvn_avahi.so";
inline constexpr char kFindServicesSymbol[] = "QvnIpv4FindServices";

// As findServices; adds what it finds.
using FindServices = void(const std::string& name, ServiceDeadline deadline, std::vector<Service>& services);

}  // namespace qvn::ipv4
