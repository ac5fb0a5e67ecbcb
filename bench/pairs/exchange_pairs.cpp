// A request to the device and its reply, against the same on a bare socket.
#include <array>
#include <span>
#include <thread>
#include <vector>

#include "measure.h"
#include "pairs/pairs.h"
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

// The same request to the same device, on a thread that is made and joined for it.
void bareExchange(const PlainSocket& socket, std::span<const std::uint8_t> request) {
  std::thread worker([&] {
    Reply reply;
    socket.writeAll(request.data(), request.size());
    socket.read(reply.data(), reply.size());
  });
  worker.join();
}

// The exported functions of a kind of device: `open` and `close` make and end the connection that `exchange`
// uses.
struct Device {
  std::uint32_t handle;
  std::uint32_t (*open)(std::uint32_t client, std::uint32_t handle);
  std::uint32_t (*close)(std::uint32_t client, std::uint32_t handle);
  std::uint32_t (*exchange)(std::uint32_t client, std::uint32_t handle, const std::uint8_t* request,
                            std::uint32_t requestLength, std::uint8_t* reply, std::uint32_t replySize,
                            std::uint32_t* replyLength);
};

constexpr Device kPrinter = {kFastPrinter, QvnOpenPrinter, QvnClosePrinter, QvnExchangeNpaPrinter};
constexpr Device kScanner = {kFastScanner, QvnOpenScanner, QvnCloseScanner, QvnExchangeDataScanner};

double ratioOf(const Installation& installation, const Device& device, std::uint16_t port,
               std::span<const std::uint8_t> request) {
  const std::uint32_t client = installation.client();
  const auto exchange = [&] {
    Reply reply;
    std::uint32_t length = 0;
    require(device.exchange(client, device.handle, request.data(), static_cast<std::uint32_t>(request.size()),
                            reply.data(), reply.size(), &length),
            "the exchange");
  };
  const PlainSocket socket(port);
  std::vector<double> ratios;
  for (int connection = 0; connection < kConnections; ++connection) {
    require(device.open(client, device.handle), "opening the device");
    ratios.push_back(medianRatio(
        kRounds, [&] { return timeOf(kExchangesPerRound, exchange); },
        [&] { return timeOf(kExchangesPerRound, [&] { bareExchange(socket, request); }); }));
    require(device.close(client, device.handle), "closing the device");
  }
  return median(ratios);
}

}  // namespace

void measureExchanges(const Installation& installation, std::uint16_t bidiPort, std::uint16_t scanPort,
                      RatioTable& table) {
  table.atMost("exchange: QvnExchangeNpaPrinter / bare ping-pong on a thread of its own",
               ratioOf(installation, kPrinter, bidiPort, kSummary), 1.25);
  table.atMost("exchange: QvnExchangeDataScanner / bare ping-pong on a thread of its own",
               ratioOf(installation, kScanner, scanPort, kResolution), 1.25);
}

}  // namespace qvn::bench
