#include "peers/hid_source.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <vector>

#include "measure.h"

namespace qvn::bench {
namespace {

struct Order {
  std::uint32_t connection;
  std::uint32_t reports;
};

void sendReport(int connection, std::uint32_t number) {
  std::array<std::uint8_t, HidSource::kFrameHeader + HidSource::kReportSize> frame = {
      1, HidSource::kReportSize, 0};
  const std::uint64_t now = nanosecondsNow();
  std::memcpy(frame.data() + HidSource::kFrameHeader, &number, sizeof number);
  std::memcpy(frame.data() + HidSource::kFrameHeader + sizeof number, &now, sizeof now);
  sendAll(connection, frame.data(), frame.size());
}

void serve(int listener, int control) {
  const auto carryOut = [control](const std::vector<int>& connections) {
    Order order{};
    if (read(control, &order, sizeof order) != sizeof order || order.connection >= connections.size()) {
      return false;
    }
    for (std::uint32_t number = 0; number < order.reports; ++number) {
      sendReport(connections[order.connection], number);
    }
    return true;
  };
  serveConnections(listener, control, carryOut, [](int connection) {
    std::uint8_t unused[256];
    return recv(connection, unused, sizeof unused, 0) > 0;
  });
}

}  // namespace

HidSource::HidSource() : peer_(serve) {}

void HidSource::send(std::uint32_t connection, std::uint32_t reports) const {
  peer_.tell(Order{connection, reports});
}

HidSource::Report HidSource::parse(std::span<const std::uint8_t> report) {
  Report parsed{};
  if (report.size() != kReportSize) return parsed;
  std::memcpy(&parsed.number, report.data(), sizeof parsed.number);
  std::memcpy(&parsed.sentAt, report.data() + sizeof parsed.number, sizeof parsed.sentAt);
  return parsed;
}

}  // namespace qvn::bench
