// The names and kinds of transports.
#pragma once

#include <string_view>

namespace qvn {

inline constexpr char kAllTransport[] = "ALL_TRANSPORT";
inline constexpr char kLocalTransport[] = "LOCAL_TRANSPORT";
inline constexpr char kNetworkTransport[] = "NETWORK_TRANSPORT";

inline constexpr char kUsb1Transport[] = "USB1";

// Whether a filter (a name or a kind) covers the transport of that name; without case.
bool transportMatches(std::string_view filter, std::string_view transportName);

}  // namespace qvn
