// What the library knows this transport by.
#pragma once

#include "shared/base/device_text.h"

namespace qvn::ipv4 {

inline constexpr shared::TransportIdentity kTransport{"IPv4", "NETWORK_TRANSPORT"};

// Of what discovery logs.
inline constexpr char kDiscoveryLogComponent[] = "Ip1TransportDiscovery";

}  // namespace qvn::ipv4
