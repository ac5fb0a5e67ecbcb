#include "ip_places.h"

#include <cstdint>
#include <utility>

#include "base/ip_settings.h"
#include "net/tcp_socket.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"

namespace qvn::ipv4 {
namespace {

// Print data on its way to the device. Megabytes of it in the system's buffers would be out of a cancel's
// reach, hide from the library how fast the device is, and fall out of the processor's caches.
constexpr std::uint32_t kMaxUnsentPrintData = std::uint32_t{64} << 10;

class IpPlace : public shared::Place {
 public:
  explicit IpPlace(const Endpoint& endpoint, std::uint32_t maxUnsent = 0)
      : endpoint_(endpoint), maxUnsent_(maxUnsent) {}

  shared::Timeouts timeouts() const override { return currentTimeouts(); }

  std::uint32_t connect(const shared::Timeouts& timeouts,
                        std::unique_ptr<shared::Channel>& channel) const override {
    auto socket = std::make_unique<TcpSocket>();
    const std::uint32_t rc = socket->connect(endpoint_, timeouts.connect);
    if (rc != QRN_ERROR_SUCCESS) return rc;
    if (maxUnsent_ != 0) socket->limitUnsent(maxUnsent_);
    channel = std::move(socket);
    return QRN_ERROR_SUCCESS;
  }

 private:
  const Endpoint endpoint_;
  const std::uint32_t maxUnsent_;  // 0: as the system has it
};

// False when the text does not say where the device is.
bool addressOf(const std::string& deviceAttributes, std::uint32_t& address) {
  std::string text;
  AttributeCodec::getString(deviceAttributes, attribute::kAddress, text);
  return parseAddress(text, address);
}

// Port 0, which nothing can be opened on, when the text does not say where the device is.
Endpoint endpointOf(const std::string& deviceAttributes, const char* portDescriptor) {
  Endpoint endpoint;
  std::uint32_t port = 0;
  AttributeCodec::getLong(deviceAttributes, portDescriptor, port);
  if (addressOf(deviceAttributes, endpoint.address) && port <= 0xFFFF) {
    endpoint.port = static_cast<std::uint16_t>(port);
  }
  return endpoint;
}

}  // namespace

std::shared_ptr<const shared::Place> IpPlaces::printPlace(const std::string& deviceAttributes) const {
  return std::make_shared<IpPlace>(endpointOf(deviceAttributes, attribute::kIpPort), kMaxUnsentPrintData);
}

std::shared_ptr<const shared::Place> IpPlaces::talkPlace(const std::string& deviceAttributes) const {
  return std::make_shared<IpPlace>(endpointOf(deviceAttributes, attribute::kChannelId));
}

bool IpPlaces::isPlain(const std::string& deviceAttributes) const {
  std::uint32_t port = 0;
  AttributeCodec::getLong(deviceAttributes, attribute::kChannelId, port);
  return isPlaced(deviceAttributes) && port == 0;
}

bool IpPlaces::isPlaced(const std::string& deviceAttributes) const {
  std::uint32_t address = 0;
  return addressOf(deviceAttributes, address);
}

}  // namespace qvn::ipv4
