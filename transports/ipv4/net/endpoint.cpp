#include "net/endpoint.h"

#include <arpa/inet.h>

namespace qvn::ipv4 {

bool parseAddress(const std::string& text, std::uint32_t& address) {
  in_addr parsed{};
  if (inet_pton(AF_INET, text.c_str(), &parsed) != 1) return false;
  address = ntohl(parsed.s_addr);
  return true;
}

std::string addressText(std::uint32_t address) {
  in_addr network{};
  network.s_addr = htonl(address);
  char text[INET_ADDRSTRLEN];
  return inet_ntop(AF_INET, &network, text, sizeof text);
}

}  // namespace qvn::ipv4
