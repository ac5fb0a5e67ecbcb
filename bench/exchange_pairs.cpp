// A request to the device and its reply, against the same on a bare socket.
#include <array>
#include <span>
#include <thread>

#include "measure.h"
#include "pairs.h"
#include "qvn/qvn.h"

namespace qvn::bench {
namespace {

constexpr int kRounds = 41;
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

double ratioOf(std::uint32_t client, void (*exchange)(std::uint32_t), const PlainSocket& socket,
               std::span<const std::uint8_t> request) {
  return medianRatio(
      kRounds, [&] { return timeOf(kExchangesPerRound, [&] { exchange(client); }); },
      [&] { return timeOf(kExchangesPerRound, [&] { bareExchange(socket, request); }); });
}

}  // namespace

void measureExchanges(const Installation& installation, std::uint16_t bidiPort, std::uint16_t scanPort,
                      RatioTable& table) {
  const std::uint32_t client = installation.client();
  {
    require(QvnOpenPrinter(client, kFastPrinter), "QvnOpenPrinter");
    const double ratio = ratioOf(client, exchangePacket, PlainSocket(bidiPort), kSummary);
    require(QvnClosePrinter(client, kFastPrinter), "QvnClosePrinter");
    table.atMost("exchange: QvnExchangeNpaPrinter / bare ping-pong on a thread of its own", ratio, 1.25);
  }
  require(QvnOpenScanner(client, kFastScanner), "QvnOpenScanner");
  const double ratio = ratioOf(client, exchangeCommand, PlainSocket(scanPort), kResolution);
  require(QvnCloseScanner(client, kFastScanner), "QvnCloseScanner");
  table.atMost("exchange: QvnExchangeDataScanner / bare ping-pong on a thread of its own", ratio, 1.25);
}

}  // namespace qvn::bench
