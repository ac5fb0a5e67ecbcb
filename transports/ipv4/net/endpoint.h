// An address and a port, and addresses as texts.
#pragma once

#include <cstdint>
#include <string>
#include <tuple>

namespace qvn::ipv4 {

// Where a service of a device is.
struct Endpoint {
  std::uint32_t address = 0;  // in host byte order
  std::uint16_t port = 0;

  friend bool operator<(const Endpoint& left, const Endpoint& right) {
    return std::tie(left.address, left.port) < std::tie(right.address, right.port);
  }
};

// "a.b.c.d", all four in decimal.
bool parseAddress(const std::string& text, std::uint32_t& address);
std::string addressText(std::uint32_t address);

}  // namespace qvn::ipv4
