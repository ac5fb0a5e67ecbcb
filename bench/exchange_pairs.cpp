// A request to the device and its reply, against the same on a bare socket.
#include <array>
#include <span>
#include <thread>
#include <vector>

#include "measure.h"
#include "pairs.h"
#include "qvn/qvn.h"

namespace qvn::bench {
namespace {

// Where the system puts a connection's thread decides much, and stays so: many connections.
constexpr int kConnections = 9;
constexpr int kRounds = 5;
constexpr std::uint32_t kExchangesPerRound = 100;

constexpr std::array<std::uint8_t, 6> kSummary = {0xA5, 0x00, 0x03, 0x50, 0x01, 0x00};
constexpr std::array<std::uint8_t, 8> kResolution = {0x1B, 'S', 'D', 0x2C, 0x01, 0x2C, 0x01, 0x00};
using Reply = std::array<std::uint8_t, 256>;

void exchangePacket(std::uint32_t client) {
  Reply reply;
  std::uint32_t length = 0;
  require(QvnExchangeNpaPrinter(client, kFastPrinter, kSummary.data(), kSummary.size(), reply.data(),
                                reply.size(), &length),
          "QvnExchangeNpaPrinter");
}

void exchangeCommand(std::uint32_t client) {
  Reply reply;
  std::uint32_t length = 0;
  require(QvnExchangeDataScanner(client, kFastScanner, kResolution.data(), kResolution.size(), reply.data(),
                                 reply.size(), &length),
          "QvnExchangeDataScanner");
}

// The same request to the same device, on a thread that is made and joined for it.
void bareExchange(const PlainSocket& socket, std::span<const std::uint8_t> request) {
  std::thread worker([&] {
    Reply reply;
    socket.writeAll(request.data(), request.size());
    socket.read(reply.data(), reply.size());
  });
  worker.join();
}

using Call = std::uint32_t (*)(std::uint32_t client, std::uint32_t handle);

// `open` and `close` make and end the connection that `exchange` uses.
double ratioOf(const Installation& installation, std::uint32_t handle, Call open, Call close,
               void (*exchange)(std::uint32_t), std::uint16_t port, std::span<const std::uint8_t> request) {
  const std::uint32_t client = installation.client();
  const PlainSocket socket(port);
  std::vector<double> ratios;
  for (int connection = 0; connection < kConnections; ++connection) {
    require(open(client, handle), "opening the device");
    ratios.push_back(medianRatio(
        kRounds, [&] { return timeOf(kExchangesPerRound, [&] { exchange(client); }); },
        [&] { return timeOf(kExchangesPerRound, [&] { bareExchange(socket, request); }); }));
    require(close(client, handle), "closing the device");
  }
  return median(ratios);
}

}  // namespace

void measureExchanges(const Installation& installation, std::uint16_t bidiPort, std::uint16_t scanPort,
                      RatioTable& table) {
  table.atMost("exchange: QvnExchangeNpaPrinter / bare ping-pong on a thread of its own",
               ratioOf(installation, kFastPrinter, QvnOpenPrinter, QvnClosePrinter, exchangePacket, bidiPort,
                       kSummary),
               1.25);
  table.atMost("exchange: QvnExchangeDataScanner / bare ping-pong on a thread of its own",
               ratioOf(installation, kFastScanner, QvnOpenScanner, QvnCloseScanner, exchangeCommand, scanPort,
                       kResolution),
               1.25);
}

}  // namespace qvn::bench
