// The texts that say where to look for devices.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "net/endpoint.h"

namespace qvn::ipv4 {

inline constexpr std::uint16_t kDefaultDiscoveryPort = 9200;

// As many places as one discovery asks at most.
inline constexpr std::size_t kMaxSearchPlaces = 1024;

// Stands among the places for the services that the network announces.
inline constexpr std::string_view kServicesWord = "dns-sd";

struct SearchText {
  std::vector<Endpoint> places;  // in order, each once
  bool services = false;
};

// Items separated by commas: an address, "first-last" for a range of addresses, either with ":port" behind,
// or the word above. "127.0.0.1:9199, 10.0.0.1-10.0.0.20, dns-sd". 0, or 87 when the text is anything else or
// names too many places.
std::uint32_t parseSearchText(std::string_view text, SearchText& search);

}  // namespace qvn::ipv4
