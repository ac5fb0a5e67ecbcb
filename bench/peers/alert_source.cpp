#include "peers/alert_source.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <vector>

#include "measure.h"

namespace qvn::bench {
namespace {

// An extended alert (IEEE 1284.1), as long as it takes to carry the time behind its eleven bytes.
constexpr std::array<std::uint8_t, AlertSource::kAlertSize> kAlert = {0xA5, 0, 16, 0x20, 0xF0, 0x73,
                                                                      0,    1, 0,  0,    0};
constexpr std::size_t kTimeOffset = 11;

void sendAlert(int connection) {
  auto alert = kAlert;
  const std::uint64_t now = nanosecondsNow();
  std::memcpy(alert.data() + kTimeOffset, &now, sizeof now);
  sendAll(connection, alert.data(), alert.size());
}

// Every packet is acknowledged as it came; no request of a registration is longer than one read.
bool acknowledge(int connection) {
  std::uint8_t packet[256];
  const ssize_t got = recv(connection, packet, sizeof packet, 0);
  if (got <= 0) return false;
  if (got > 3) packet[3] = 0x20;
  return send(connection, packet, static_cast<std::size_t>(got), MSG_NOSIGNAL) == got;
}

void serve(int listener, int control) {
  const auto raise = [control](const std::vector<int>& connections) {
    std::uint32_t connection = 0;
    if (read(control, &connection, sizeof connection) != sizeof connection ||
        connection >= connections.size())
      return false;
    sendAlert(connections[connection]);
    return true;
  };
  serveConnections(listener, control, raise, acknowledge);
}

}  // namespace

AlertSource::AlertSource() : peer_(serve) {}

void AlertSource::raise(std::uint32_t connection) { peer_.tell(connection); }

std::uint64_t AlertSource::sentAt(std::span<const std::uint8_t> alert) {
  std::uint64_t time = 0;
  if (alert.size() == kAlertSize) std::memcpy(&time, alert.data() + kTimeOffset, sizeof time);
  return time;
}

}  // namespace qvn::bench
