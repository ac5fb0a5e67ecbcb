// Ports on loopback.
#pragma once

#include <netinet/in.h>

#include <cstdint>

namespace qvn::bench {

sockaddr_in loopback(std::uint16_t port);

// A socket that listens on a free port. Throws std::system_error.
int listenOnLoopback(std::uint16_t& port);

}  // namespace qvn::bench
