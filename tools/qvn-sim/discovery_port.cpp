#include "discovery_port.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <cctype>
#include <string_view>

namespace sim {
namespace {

constexpr std::string_view kQuestion = "QVN-DISCOVER 1 ";
constexpr std::size_t kMaxToken = 32;

// The token of a well-formed question, else nothing.
std::string_view tokenOf(std::string_view datagram) {
  if (datagram.substr(0, kQuestion.size()) != kQuestion || datagram.back() != '\n') return {};
  const std::string_view token = datagram.substr(kQuestion.size(), datagram.size() - kQuestion.size() - 1);
  const bool wellFormed = token.size() <= kMaxToken && std::all_of(token.begin(), token.end(), [](char c) {
                            return std::isalnum(static_cast<unsigned char>(c)) != 0;
                          });
  return wellFormed ? token : std::string_view();
}

std::string portLine(const char* key, std::uint16_t port) {
  return port == 0 ? std::string() : std::string(key) + "=" + std::to_string(port) + "\n";
}

}  // namespace

DiscoveryPort::DiscoveryPort(EventLoop& loop, const FaultSwitches& faults, const Identity& identity,
                             const TcpPorts& ports, const std::string& address, std::uint16_t port)
    : loop_(loop),
      faults_(faults),
      socket_(bindUdp(address, port)),
      description_("family=" + identity.family + "\nmodel=" + identity.model + "\nserial=" + identity.serial +
                   "\nname=" + identity.name + "\n" + portLine("print", ports.print) +
                   portLine("bidi", ports.bidi) + portLine("scan", ports.scan) + portLine("hid", ports.hid)) {
  loop.watch(socket_.get(), [this] { answer(); });
}

void DiscoveryPort::answer() {
  char datagram[512];
  sockaddr_in from{};
  socklen_t fromSize = sizeof from;
  const ssize_t got =
      recvfrom(socket_.get(), datagram, sizeof datagram, 0, reinterpret_cast<sockaddr*>(&from), &fromSize);
  if (got <= 0) return;
  const std::string_view token = tokenOf(std::string_view(datagram, static_cast<std::size_t>(got)));
  if (token.empty()) return;
  const std::string reply = "QVN-DEVICE 1 " + std::string(token) + "\n" + description_;
  loop_.after(faults_.discoveryDelay(), [this, reply, from] {
    sendto(socket_.get(), reply.data(), reply.size(), MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&from),
           sizeof from);
  });
}

}  // namespace sim
