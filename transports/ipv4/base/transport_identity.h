// What the library knows this transport by.
#pragma once

namespace qvn::ipv4 {

inline constexpr char kTransportName[] = "IPv4";
inline constexpr char kTransportKind[] = "NETWORK_TRANSPORT";

// Of what discovery logs.
inline constexpr char kDiscoveryLogComponent[] = "Ip1TransportDiscovery";

}  // namespace qvn::ipv4
