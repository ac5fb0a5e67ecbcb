// What the library knows this transport by.
#pragma once

namespace qvn::ipv4 {

inline constexpr char kTransportName[] = "IPv4";
inline constexpr char kTransportKind[] = "NETWORK_TRANSPORT";

}  // namespace qvn::ipv4
