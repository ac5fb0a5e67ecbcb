#include "ip_discoverer.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <random>
#include <set>

#include "device_numbers.h"
#include "ip_settings.h"
#include "platform/registry.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "search_text.h"
#include "transport_identity.h"

namespace qvn::ipv4 {
namespace {

namespace registry = platform::registry;

class UdpSocket {
 public:
  UdpSocket() : fd_(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {}
  ~UdpSocket() {
    if (isOpen()) close(fd_);
  }
  UdpSocket(const UdpSocket&) = delete;
  UdpSocket& operator=(const UdpSocket&) = delete;

  bool isOpen() const { return fd_ >= 0; }
  int fd() const { return fd_; }

  void send(const Endpoint& to, std::string_view datagram) {
    sockaddr_in where{};
    where.sin_family = AF_INET;
    where.sin_port = htons(to.port);
    where.sin_addr.s_addr = htonl(to.address);
    // A place that cannot be reached does not answer; there is nothing else to do about it.
    sendto(fd_, datagram.data(), datagram.size(), MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&where),
           sizeof where);
  }

  // False when nothing is waiting. A datagram longer than `buffer` comes cut.
  bool receive(Endpoint& from, std::vector<char>& buffer, std::string_view& datagram) {
    sockaddr_in where{};
    socklen_t size = sizeof where;
    const ssize_t got =
        recvfrom(fd_, buffer.data(), buffer.size(), 0, reinterpret_cast<sockaddr*>(&where), &size);
    if (got < 0) return false;
    from = {ntohl(where.sin_addr.s_addr), ntohs(where.sin_port)};
    datagram = std::string_view(buffer.data(), static_cast<std::size_t>(got));
    return true;
  }

 private:
  const int fd_;
};

std::string newToken() {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::random_device random;
  std::string token;
  for (int i = 0; i < 16; ++i) token += kDigits[random() % 16];
  return token;
}

std::string storedDefaults() {
  registry::Key key;
  registry::Value value;
  const std::string path = std::string(kLibraryRegistryRoot) + kSettingsKey;
  if (registry::openKey(registry::Hive::LocalMachine, path, key) != platform::kSuccess ||
      registry::getValue(key, kSearchValue, value) != platform::kSuccess ||
      value.type != registry::ValueType::String) {
    return {};
  }
  return value.data;
}

}  // namespace

std::uint32_t IpDiscoverer::discover(const std::string& options) {
  std::vector<Endpoint> places;
  const std::string& text = options.empty() ? storedDefaults() : options;
  if (const std::uint32_t rc = parseSearchText(text, places); rc != QRN_ERROR_SUCCESS) return rc;
  std::vector<Found> found;
  std::uint32_t result = ask(places, found);
  std::set<std::string> serials;
  for (const Found& device : found) {
    if (!serials.insert(device.answer.serial).second) continue;
    const std::uint32_t told = tell(device);
    if (result == QRN_ERROR_SUCCESS) result = told;
  }
  return result;
}

std::uint32_t IpDiscoverer::discoverSpecific(const std::string& deviceAttributes) {
  std::string address;
  std::string serial;
  std::uint32_t port = 0;
  Endpoint place;
  if (AttributeCodec::getString(deviceAttributes, attribute::kAddress, address) != QRN_ERROR_SUCCESS ||
      AttributeCodec::getString(deviceAttributes, attribute::kSerialNumber, serial) != QRN_ERROR_SUCCESS ||
      AttributeCodec::getLong(deviceAttributes, attribute::kUdpPort, port) != QRN_ERROR_SUCCESS ||
      !parseAddress(address, place.address) || port == 0 || port > 0xFFFF) {
    return QRN_ERROR_INVALID_PARAMETER;
  }
  place.port = static_cast<std::uint16_t>(port);
  std::vector<Found> found;
  if (const std::uint32_t rc = ask({place}, found); rc != QRN_ERROR_SUCCESS) return rc;
  if (found.empty()) return QRN_ERROR_TIMEOUT;
  return found.front().answer.serial == serial ? tell(found.front()) : QRN_ERROR_NOT_FOUND;
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
  std::vector<Endpoint> places;
  if (defaults == nullptr) return QRN_ERROR_INVALID_PARAMETER;
  if (const std::uint32_t rc = parseSearchText(defaults, places); rc != QRN_ERROR_SUCCESS) return rc;
  registry::Key key;
  const platform::ErrorCode opened =
      registry::openKey(registry::Hive::LocalMachine, kLibraryRegistryRoot, key);
  if (opened != platform::kSuccess) return opened;
  const platform::ErrorCode made =
      registry::createKey(registry::Hive::LocalMachine, std::string(kLibraryRegistryRoot) + kSettingsKey,
                          {.everyone = true, .inheritable = true}, key);
  if (made != platform::kSuccess) return made;
  return registry::setValue(key, kSearchValue, registry::ValueType::String, defaults);
}

std::uint32_t IpDiscoverer::ask(const std::vector<Endpoint>& places, std::vector<Found>& found) {
  if (places.empty()) return QRN_ERROR_SUCCESS;
  UdpSocket socket;
  if (!socket.isOpen()) return codeFromErrno(errno);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(discoveryTimeout());
  // The token ties an answer to this question: nothing that was sent before it can fit.
  const std::string token = newToken();
  std::set<Endpoint> waiting(places.begin(), places.end());
  for (const Endpoint& place : waiting) socket.send(place, discoveryQuestion(token));

  std::vector<char> buffer(kMaxAnswer + 1);
  while (!waiting.empty()) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()).count();
    if (left <= 0) break;
    pollfd entry{socket.fd(), POLLIN, 0};
    if (poll(&entry, 1, static_cast<int>(std::min<std::int64_t>(left, 60000))) < 0 && errno != EINTR) break;
    Endpoint from;
    std::string_view datagram;
    if (!socket.receive(from, buffer, datagram)) continue;
    if (waiting.find(from) == waiting.end()) continue;  // not asked, or it has answered already
    if (auto answer = parseAnswer(datagram, token)) {
      waiting.erase(from);
      found.push_back({from, std::move(*answer)});
    }
  }
  return QRN_ERROR_SUCCESS;
}

std::uint32_t IpDiscoverer::tell(const Found& device) {
  const DeviceAnswer& answer = device.answer;
  std::uint32_t handle = 0;
  if (const std::uint32_t rc = handleOf(answer.serial, handle); rc != QRN_ERROR_SUCCESS) return rc;
  std::string text;
  AttributeCodec::setString(text, attribute::kDevice, answer.family);
  AttributeCodec::setLong(text, attribute::kHandle, handle);
  AttributeCodec::setString(text, attribute::kPortname, "IP_" + answer.serial);
  AttributeCodec::setString(text, attribute::kAddress, addressText(device.place.address));
  AttributeCodec::setString(text, attribute::kPortType, "TCP");
  AttributeCodec::setString(text, attribute::kTransport, kTransportName);
  AttributeCodec::setString(text, attribute::kTransportType, kTransportKind);
  AttributeCodec::setString(text, attribute::kPrinterModel, answer.model);
  AttributeCodec::setString(text, attribute::kSerialNumber, answer.serial);
  AttributeCodec::setString(text, attribute::kNickname, answer.name);
  AttributeCodec::setLong(text, attribute::kIpPort, answer.printPort);
  AttributeCodec::setLong(text, attribute::kChannelId, answer.bidiPort);
  AttributeCodec::setLong(text, attribute::kUdpPort, device.place.port);
  notify(text);
  return QRN_ERROR_SUCCESS;
}

}  // namespace qvn::ipv4
