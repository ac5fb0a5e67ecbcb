#include "connections/ip_connection_manager.h"

#include "base/transport_identity.h"
#include "connections/esc_connection.h"
#include "connections/hid_connection.h"
#include "connections/npa_connection.h"
#include "connections/print_connection.h"
#include "connections/store_connection.h"
#include "net/tcp_socket.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"

namespace qvn::ipv4 {
namespace {

// A printer that takes print data only. A text without a proper address describes no device at all.
bool isPlain(const std::string& deviceAttributes) {
  std::string addressText;
  std::uint32_t address = 0;
  std::uint32_t port = 0;
  AttributeCodec::getString(deviceAttributes, attribute::kAddress, addressText);
  AttributeCodec::getLong(deviceAttributes, attribute::kChannelId, port);
  return parseAddress(addressText, address) && port == 0;
}

// Port 0, which nothing can be opened on, when the text does not say where the device is.
Endpoint endpointOf(const std::string& deviceAttributes, const char* portDescriptor) {
  std::string addressText;
  Endpoint endpoint;
  std::uint32_t port = 0;
  AttributeCodec::getString(deviceAttributes, attribute::kAddress, addressText);
  AttributeCodec::getLong(deviceAttributes, portDescriptor, port);
  if (parseAddress(addressText, endpoint.address) && port <= 0xFFFF) {
    endpoint.port = static_cast<std::uint16_t>(port);
  }
  return endpoint;
}

}  // namespace

Connectable* IpConnectionManager::getConnection(const std::string& deviceAttributes,
                                                const std::string& connectionName) {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    // Every operation on a device asks, mostly with the text of the last one.
    for (auto& [key, entry] : entries_) {
      if (entry.askedName != connectionName || entry.askedText != deviceAttributes) continue;
      ++entry.holders;
      return entry.connection.get();
    }
  }
  Key key;
  AttributeCodec::getString(deviceAttributes, attribute::kDevice, key.family);
  AttributeCodec::getLong(deviceAttributes, attribute::kHandle, key.handle);
  const bool isHid = key.family == kHidFamily;
  const bool isPrinter = !isHid && key.family != kCpdScannerFamily && key.family != kBpdScannerFamily;
  key.name = connectionName == connection_name::kAlert && !isHid ? connection_name::kBidi : connectionName;
  key.hasChannel = key.name != connection_name::kBidi || !isPrinter || !isPlain(deviceAttributes);
  const Endpoint endpoint = endpointOf(
      deviceAttributes, key.name == connection_name::kPrint ? attribute::kIpPort : attribute::kChannelId);

  const std::lock_guard<std::mutex> lock(mutex_);
  dropUnusedLocked();
  Entry& entry = entries_[key];
  if (entry.connection == nullptr) entry.connection = makeConnection(key);
  entry.connection->setEndpoint(endpoint);
  entry.askedName = connectionName;
  entry.askedText = deviceAttributes;
  ++entry.holders;
  return entry.connection.get();
}

void IpConnectionManager::releaseConnection(Connectable* connection) {
  const std::lock_guard<std::mutex> lock(mutex_);
  for (auto& [key, entry] : entries_) {
    if (entry.connection.get() == connection && entry.holders > 0) --entry.holders;
  }
  dropUnusedLocked();
}

void IpConnectionManager::closeAll() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    entries_.clear();
  }
  retired_.join();
}

std::unique_ptr<IpConnection> IpConnectionManager::makeConnection(const Key& key) {
  if (key.name == connection_name::kPrint) return std::make_unique<PrintConnection>();
  if (key.name == connection_name::kAlert) return std::make_unique<HidConnection>(retired_);
  if (key.name == connection_name::kBidi && key.hasChannel && key.family != kHidFamily) {
    if (key.family == kCpdScannerFamily) return std::make_unique<EscConnection>(retired_);
    if (key.family == kBpdScannerFamily) return std::make_unique<StoreConnection>(retired_);
    return std::make_unique<NpaConnection>(retired_);
  }
  const bool needsNone =
      !key.hasChannel || key.name == connection_name::kCache || key.name == connection_name::kConfiguration;
  return std::make_unique<ChannellessConnection>(needsNone ? QRN_ERROR_SUCCESS : QRN_ERROR_INVALID_FUNCTION);
}

void IpConnectionManager::dropUnusedLocked() {
  std::erase_if(entries_, [](const auto& item) {
    return item.second.holders == 0 && item.second.connection->getTag() == 0;
  });
}

}  // namespace qvn::ipv4
