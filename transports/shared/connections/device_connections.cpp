#include "shared/connections/device_connections.h"

#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "shared/base/families.h"
#include "shared/connections/esc_connection.h"
#include "shared/connections/hid_connection.h"
#include "shared/connections/npa_connection.h"
#include "shared/connections/print_connection.h"
#include "shared/connections/store_connection.h"

namespace qvn::shared {

Connectable* DeviceConnections::getConnection(const std::string& deviceAttributes,
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
  key.hasChannel = key.name != connection_name::kBidi || !isPrinter || !places_.isPlain(deviceAttributes);
  std::shared_ptr<const Place> place = key.name == connection_name::kPrint
                                           ? places_.printPlace(deviceAttributes)
                                           : places_.talkPlace(deviceAttributes);

  const std::lock_guard<std::mutex> lock(mutex_);
  dropUnusedLocked();
  Entry& entry = entries_[key];
  if (entry.connection == nullptr) entry.connection = makeConnection(key);
  entry.connection->setPlace(std::move(place));
  entry.askedName = connectionName;
  entry.askedText = deviceAttributes;
  ++entry.holders;
  return entry.connection.get();
}

void DeviceConnections::releaseConnection(Connectable* connection) {
  const std::lock_guard<std::mutex> lock(mutex_);
  for (auto& [key, entry] : entries_) {
    if (entry.connection.get() == connection && entry.holders > 0) --entry.holders;
  }
  dropUnusedLocked();
}

void DeviceConnections::closeAll() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    entries_.clear();
  }
  retired_.join();
}

std::unique_ptr<TransportConnection> DeviceConnections::makeConnection(const Key& key) {
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

void DeviceConnections::dropUnusedLocked() {
  std::erase_if(entries_, [](const auto& item) {
    return item.second.holders == 0 && item.second.connection->getTag() == 0;
  });
}

}  // namespace qvn::shared
