// A request to the device and its reply, against the same on a bare socket.
#include <array>
#include <thread>

#include "measure.h"
#include "pairs.h"
#include "qvn/qvn.h"

namespace qvn::bench {
namespace {

constexpr int kRounds = 41;
constexpr std::uint32_t kExchangesPerRound = 100;

constexpr std::array<std::uint8_t, 6> kSummary = {0xA5, 0x00, 0x03, 0x50, 0x01, 0x00};
using Reply = std::array<std::uint8_t, 256>;

void exchange(std::uint32_t client) {
  Reply reply;
  std::uint32_t length = 0;
  require(QvnExchangeNpaPrinter(client, kFastPrinter, kSummary.data(), kSummary.size(), reply.data(),
                                reply.size(), &length),
          "QvnExchangeNpaPrinter");
}

// The same packet to the same device, on a thread that is made and joined for it.
void bareExchange(const PlainSocket& socket) {
  std::thread worker([&] {
    Reply reply;
    socket.writeAll(kSummary.data(), kSummary.size());
    socket.read(reply.data(), reply.size());
  });
  worker.join();
}

}  // namespace

void measureExchanges(const Installation& installation, std::uint16_t bidiPort, RatioTable& table) {
  const PlainSocket socket(bidiPort);
  const std::uint32_t client = installation.client();
  require(QvnOpenPrinter(client, kFastPrinter), "QvnOpenPrinter");
  const double ratio = medianRatio(
      kRounds, [&] { return timeOf(kExchangesPerRound, [&] { exchange(client); }); },
      [&] { return timeOf(kExchangesPerRound, [&] { bareExchange(socket); }); });
  require(QvnClosePrinter(client, kFastPrinter), "QvnClosePrinter");
  table.atMost("exchange: QvnExchangeNpaPrinter / bare ping-pong on a thread of its own", ratio, 1.25);
}

}  // namespace qvn::bench
