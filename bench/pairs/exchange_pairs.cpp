// A request to the device and its reply, against the same on a bare socket.
#include <array>
#include <span>

#include "exchange_rows.h"
#include "measure.h"
#include "pairs/pairs.h"
#include "qvn/qvn.h"

namespace qvn::bench {
namespace {

constexpr std::array<std::uint8_t, 6> kSummary = {0xA5, 0x00, 0x03, 0x50, 0x01, 0x00};
constexpr std::array<std::uint8_t, 8> kResolution = {0x1B, 'S', 'D', 0x2C, 0x01, 0x2C, 0x01, 0x00};
using Reply = std::array<std::uint8_t, 256>;

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

std::vector<double> measureConnection(std::uint32_t client, const Device& device, std::uint16_t port,
                                      std::span<const std::uint8_t> request) {
  const PlainSocket socket(port);
  require(device.open(client, device.handle), "opening the device");
  std::vector<double> ratios = exchangeRatios(
      [&] {
        Reply reply;
        std::uint32_t length = 0;
        require(
            device.exchange(client, device.handle, request.data(), static_cast<std::uint32_t>(request.size()),
                            reply.data(), reply.size(), &length),
            "the exchange");
      },
      [&] {
        Reply reply;
        socket.writeAll(request.data(), request.size());
        socket.read(reply.data(), reply.size());
      });
  require(device.close(client, device.handle), "closing the device");
  return ratios;
}

}  // namespace

void measureExchanges(const Installation& installation, std::uint16_t bidiPort, std::uint16_t scanPort,
                      RatioTable& table) {
  const std::uint32_t client = installation.client();
  addExchangeRows(table, "QvnExchangeNpaPrinter", "bare ping-pong", "a status poll of 100 printers",
                  [&] { return measureConnection(client, kPrinter, bidiPort, kSummary); });
  addExchangeRows(table, "QvnExchangeDataScanner", "bare ping-pong", "setting a scan's parameters",
                  [&] { return measureConnection(client, kScanner, scanPort, kResolution); });
}

}  // namespace qvn::bench
