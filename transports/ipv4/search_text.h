// The texts that say where to look for devices.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "tcp_socket.h"

namespace qvn::ipv4 {

inline constexpr std::uint16_t kDefaultDiscoveryPort = 9200;

// As many places as one discovery asks at most.
inline constexpr std::size_t kMaxSearchPlaces = 1024;

// Items separated by commas: an address, "first-last" for a range of addresses, either with ":port" behind.
// "127.0.0.1:9199, 10.0.0.1-10.0.0.20". Each place is listed once. 0, or 87 when the text is anything else or
// names too many places.
std::uint32_t parseSearchText(std::string_view text, std::vector<Endpoint>& places);

}  // namespace qvn::ipv4
