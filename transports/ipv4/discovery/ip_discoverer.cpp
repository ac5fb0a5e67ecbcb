#include "discovery/ip_discoverer.h"

#include <chrono>
#include <cstring>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "base/ip_settings.h"
#include "base/transport_identity.h"
#include "discovery/device_handles.h"
#include "discovery/search_text.h"
#include "net/tcp_socket.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "qvn/transport/log.h"
#include "qvn/transport/settings.h"
#include "shared/base/device_text.h"
#include "shared/base/families.h"
#include "shared/base/part_handles.h"

namespace qvn::ipv4 {
namespace {

std::string storedDefaults() { return transportTextSetting(kSettingsKey, kSearchValue, ""); }

std::chrono::milliseconds timeout() { return std::chrono::milliseconds(discoveryTimeout()); }

// An attribute that is a port; 0 when there is none or no port can have that number.
std::uint16_t portOf(const std::string& attributes, const char* descriptor) {
  std::uint32_t port = 0;
  AttributeCodec::getLong(attributes, descriptor, port);
  return port <= 0xFFFF ? static_cast<std::uint16_t>(port) : std::uint16_t{0};
}

// What all parts have in common, whether they answered or were announced.
std::string describe(const DeviceAnswer& device, const char* family, std::uint32_t handle,
                     std::uint32_t address, std::uint16_t channel) {
  std::string text = shared::attributeTextOf(kTransport, {.family = family,
                                                          .handle = handle,
                                                          .portname = "IP_" + device.serial,
                                                          .address = addressText(address),
                                                          .portType = "TCP",
                                                          .model = device.model,
                                                          .serial = device.serial});
  AttributeCodec::setString(text, attribute::kNickname, device.name);
  AttributeCodec::setLong(text, attribute::kChannelId, channel);
  return text;
}

std::string describePrinter(const DeviceAnswer& device, std::uint32_t handle, std::uint32_t address) {
  std::string text = describe(device, device.family.c_str(), handle, address, device.bidiPort);
  AttributeCodec::setLong(text, attribute::kIpPort, device.printPort);
  return text;
}

}  // namespace

std::uint32_t IpDiscoverer::discover(const std::string& options) {
  SearchText search;
  const std::string& text = options.empty() ? storedDefaults() : options;
  if (const std::uint32_t rc = parseSearchText(text, search); rc != QRN_ERROR_SUCCESS) return rc;
  ServiceSearches::Search announced;
  if (options.empty() || search.services) announced = serviceSearches_.begin({}, timeout());
  std::vector<AnsweringDevice> answers;
  std::uint32_t result = askPlaces(search.places, {}, timeout(), answers);
  std::set<std::string> serials;
  const auto keepFirst = [&result](std::uint32_t rc) {
    if (result == QRN_ERROR_SUCCESS) result = rc;
  };
  for (const AnsweringDevice& device : answers) {
    if (serials.insert(device.answer.serial).second) keepFirst(tell(device));
  }
  for (const Service& service : serviceSearches_.end(std::move(announced))) {
    const std::optional<DeviceAnswer> device = describeService(service);
    if (device && serials.insert(device->serial).second) keepFirst(tell(service, *device));
  }
  return result;
}

std::uint32_t IpDiscoverer::discoverSpecific(const std::string& deviceAttributes) {
  std::string address;
  Endpoint place;
  if (AttributeCodec::getString(deviceAttributes, attribute::kAddress, address) != QRN_ERROR_SUCCESS ||
      !parseAddress(address, place.address)) {
    return QRN_ERROR_INVALID_PARAMETER;
  }
  std::string serial;
  AttributeCodec::getString(deviceAttributes, attribute::kSerialNumber, serial);
  place.port = portOf(deviceAttributes, attribute::kUdpPort);
  if (place.port != 0 && !serial.empty()) return findAnsweringDevice(place, serial);
  place.port = portOf(deviceAttributes, attribute::kIpPort);
  return findAnnouncedDevice(deviceAttributes, place);
}

std::uint32_t IpDiscoverer::findAnsweringDevice(const Endpoint& lastPlace, const std::string& serial) {
  std::uint32_t result = QRN_ERROR_TIMEOUT;
  std::vector<AnsweringDevice> answers;
  if (const std::uint32_t rc = askPlaces({lastPlace}, serial, timeout(), answers); rc != QRN_ERROR_SUCCESS)
    return rc;
  if (!answers.empty()) {
    if (answers.front().answer.serial == serial) return tell(answers.front());
    transportLog(kDiscoveryLogComponent, log_level::kDetail,
                 answers.front().answer.serial + " answers at " + addressText(lastPlace.address) +
                     " instead of " + serial);
    result = QRN_ERROR_NOT_FOUND;
  }
  // It may have moved. What the defaults say otherwise is no matter of this device.
  SearchText search;
  if (parseSearchText(storedDefaults(), search) != QRN_ERROR_SUCCESS) return result;
  answers.clear();
  if (const std::uint32_t rc = askPlaces(search.places, serial, timeout(), answers); rc != QRN_ERROR_SUCCESS)
    return rc;
  // Where the question ends early the device asked for is the last to have answered.
  if (!answers.empty() && answers.back().answer.serial == serial) return tell(answers.back());
  return result;
}

std::uint32_t IpDiscoverer::findAnnouncedDevice(const std::string& deviceAttributes,
                                                const Endpoint& printPort) {
  std::string serial;
  AttributeCodec::getString(deviceAttributes, attribute::kSerialNumber, serial);
  if (const std::string name = serial.empty() ? serial : serviceNameOf(serial); !name.empty()) {
    for (const Service& service : serviceSearches_.end(serviceSearches_.begin(name, timeout()))) {
      const std::optional<DeviceAnswer> device = describeService(service);
      if (device && device->serial == serial) return tell(service, *device);
    }
  }
  TcpSocket socket;
  const std::uint32_t rc = socket.connect(printPort, currentTimeouts().connect);
  if (rc != QRN_ERROR_SUCCESS) return rc;
  std::string text = deviceAttributes;
  std::uint32_t unverified = 0;
  const bool isMarked =
      AttributeCodec::getLong(text, attribute::kUnverified, unverified) == QRN_ERROR_SUCCESS;
  if (isMarked) AttributeCodec::setLong(text, attribute::kUnverified, 0);
  notify(text);
  return QRN_ERROR_SUCCESS;
}

std::uint32_t IpDiscoverer::getDefaults(char* buffer, std::uint32_t size, std::uint32_t* required) {
  const std::string defaults = storedDefaults();
  const auto needed = static_cast<std::uint32_t>(defaults.size() + 1);
  if (required != nullptr) *required = needed;
  if (buffer == nullptr || size < needed) return QRN_ERROR_INSUFFICIENT_BUFFER;
  std::memcpy(buffer, defaults.c_str(), needed);
  return QRN_ERROR_SUCCESS;
}

std::uint32_t IpDiscoverer::setDefaults(const char* defaults) {
  SearchText search;
  if (defaults == nullptr) return QRN_ERROR_INVALID_PARAMETER;
  if (const std::uint32_t rc = parseSearchText(defaults, search); rc != QRN_ERROR_SUCCESS) return rc;
  return setTransportTextSetting(kSettingsKey, kSearchValue, defaults);
}

std::uint32_t IpDiscoverer::tell(const AnsweringDevice& device) {
  std::uint32_t handle = 0;
  if (const std::uint32_t rc = handleOf(device.answer.serial, handle); rc != QRN_ERROR_SUCCESS) return rc;
  const Endpoint& place = device.place;
  const DeviceAnswer& answer = device.answer;
  const auto tellPart = [&](std::string text) {
    AttributeCodec::setLong(text, attribute::kUdpPort, place.port);
    notify(text);
  };
  tellPart(describePrinter(answer, handle, place.address));
  if (answer.scanPort != 0) {
    const char* const family =
        answer.family == shared::kBpdPrinterFamily ? shared::kBpdScannerFamily : shared::kCpdScannerFamily;
    const std::uint32_t scanner = handle + shared::kScannerHandleOffset;
    tellPart(describe(answer, family, scanner, place.address, answer.scanPort));
  }
  if (answer.hidPort != 0) {
    const std::uint32_t hid = handle + shared::kHidHandleOffset;
    tellPart(describe(answer, shared::kHidFamily, hid, place.address, answer.hidPort));
  }
  return QRN_ERROR_SUCCESS;
}

std::uint32_t IpDiscoverer::tell(const Service& service, const DeviceAnswer& described) {
  std::uint32_t handle = 0;
  const std::uint32_t rc = handleOfService(described.serial, service.name, handle);
  if (rc == QRN_ERROR_NOT_FOUND) return QRN_ERROR_SUCCESS;  // the device has said more about itself
  if (rc != QRN_ERROR_SUCCESS) return rc;
  notify(describePrinter(described, handle, service.place.address));
  return QRN_ERROR_SUCCESS;
}

}  // namespace qvn::ipv4
