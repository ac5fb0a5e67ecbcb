#include "support/usb/scripted_device.h"

#include <linux/usb/ch9.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

namespace qvn::test {

namespace {

constexpr std::uint8_t kClearHalt[] = {USB_RECIP_ENDPOINT, USB_REQ_CLEAR_FEATURE};

unsigned word(const std::uint8_t* bytes) { return bytes[0] | static_cast<unsigned>(bytes[1]) << 8; }

}  // namespace

class ScriptedDevice::Connection final : public usbfs::Peer {
 public:
  Connection(ScriptedDevice& device, usbfs::Host& host) : device_(device), host_(host) {}

  void submit(const usbfs::Transfer& transfer) override {
    if ((transfer.endpoint & 0x0F) == 0) return device_.control(host_, transfer);
    transfer.isIn() ? device_.in(host_, transfer) : device_.out(host_, transfer);
  }
  void unlink(std::uint32_t id) override { device_.unlink(host_, id); }

 private:
  ScriptedDevice& device_;
  usbfs::Host& host_;
};

std::unique_ptr<usbfs::Peer> ScriptedDevice::open(usbfs::Host& host) {
  return std::make_unique<Connection>(*this, host);
}

// What comes in

void ScriptedDevice::in(usbfs::Host& host, const usbfs::Transfer& transfer) {
  const Lock lock(mutex_);
  endpoints_[transfer.endpoint].waiting.push_back({&host, transfer.id, transfer.length, {}, 0, false, false});
  advanceIn(transfer.endpoint);
}

void ScriptedDevice::send(std::uint8_t endpoint, Bytes bytes, int status) {
  const Lock lock(mutex_);
  endpoints_[endpoint].incoming.push_back({std::move(bytes), 0, status});
  advanceIn(endpoint);
}

void ScriptedDevice::advanceIn(std::uint8_t address) {
  Endpoint& endpoint = endpoints_[address];
  while (!endpoint.waiting.empty() && (endpoint.isHalted || !endpoint.incoming.empty())) {
    const Waiting request = std::move(endpoint.waiting.front());
    endpoint.waiting.pop_front();
    if (endpoint.isHalted) {
      request.host->complete(request.id, -EPIPE, nullptr, 0);
      continue;
    }
    Incoming& unit = endpoint.incoming.front();
    const std::uint8_t* data = unit.bytes.data() + unit.sent;
    const std::size_t left = unit.bytes.size() - unit.sent;
    if (left > request.length && request.length % packetSize(address) == 0) {
      unit.sent += request.length;
      request.host->complete(request.id, 0, data, request.length);
      continue;
    }
    endpoint.isHalted = unit.status == -EPIPE;
    request.host->complete(request.id, unit.status, data, left);
    endpoint.incoming.pop_front();
  }
}

// What goes out

void ScriptedDevice::out(usbfs::Host& host, const usbfs::Transfer& transfer) {
  Lock lock(mutex_);
  Endpoint& endpoint = endpoints_[transfer.endpoint];
  const std::span<const std::uint8_t> data(transfer.data, transfer.length);
  if (endpoint.isHalted) return host.complete(transfer.id, -EPIPE, nullptr, 0);
  Taken taken{0, std::nullopt};
  const bool isFirst = endpoint.waiting.empty() && !endpoint.isOffering;
  if (isFirst) {
    endpoint.isOffering = true;
    taken = offer(transfer.endpoint, data, transfer.endsWithZeroPacket, lock);
    endpoint.isOffering = false;
  }
  if (taken.status.has_value()) {
    endpoint.isHalted = taken.status == -EPIPE;
    host.complete(transfer.id, *taken.status, nullptr, taken.count);
    return advanceOut(transfer.endpoint, lock);
  }
  // Those that came while the first was offered are behind it.
  endpoint.waiting.insert(isFirst ? endpoint.waiting.begin() : endpoint.waiting.end(),
                          {&host, transfer.id, 0, Bytes(data.begin(), data.end()), taken.count,
                           transfer.endsWithZeroPacket, false});
}

ScriptedDevice::Taken ScriptedDevice::offer(std::uint8_t address, std::span<const std::uint8_t> data,
                                            bool endsWithZeroPacket, Lock& lock) {
  if (!onOut) {
    endpoints_[address].received.emplace_back(data.begin(), data.end());
    return {data.size()};
  }
  lock.unlock();
  const Taken taken = onOut(address, data, endsWithZeroPacket);
  lock.lock();
  return taken;
}

void ScriptedDevice::resume(std::uint8_t endpoint) {
  Lock lock(mutex_);
  advanceOut(endpoint, lock);
}

void ScriptedDevice::advanceOut(std::uint8_t address, Lock& lock) {
  Endpoint& endpoint = endpoints_[address];
  while (!endpoint.waiting.empty() && !endpoint.isOffering) {
    Waiting& first = endpoint.waiting.front();
    Taken taken{0, -EPIPE};
    if (!endpoint.isHalted) {
      endpoint.isOffering = true;
      taken = offer(address, std::span(first.data).subspan(first.taken), first.endsWithZeroPacket, lock);
      endpoint.isOffering = false;
    }
    first.taken += taken.count;
    if (!taken.status.has_value() && !first.isUnlinked) return;
    if (taken.status == -EPIPE) endpoint.isHalted = true;
    first.host->complete(first.id, taken.status.value_or(-ECONNRESET), nullptr, first.taken);
    endpoint.waiting.pop_front();
  }
}

void ScriptedDevice::halt(std::uint8_t endpoint) {
  Lock lock(mutex_);
  endpoints_[endpoint].isHalted = true;
  (endpoint & USB_DIR_IN) != 0 ? advanceIn(endpoint) : advanceOut(endpoint, lock);
}

void ScriptedDevice::unlink(const usbfs::Host& host, std::uint32_t id) {
  const Lock lock(mutex_);
  for (auto& [address, endpoint] : endpoints_) {
    const auto found =
        std::find_if(endpoint.waiting.begin(), endpoint.waiting.end(),
                     [&](const Waiting& waiting) { return waiting.host == &host && waiting.id == id; });
    if (found == endpoint.waiting.end()) continue;
    if (endpoint.isOffering && found == endpoint.waiting.begin()) {
      found->isUnlinked = true;
      return;
    }
    found->host->complete(id, -ECONNRESET, nullptr, found->taken);
    endpoint.waiting.erase(found);
    return;
  }
}

// Control requests

void ScriptedDevice::control(usbfs::Host& host, const usbfs::Transfer& transfer) {
  const Setup& setup = transfer.setup;
  char text[16];
  std::snprintf(text, sizeof text, "%02X %02X %04X %04X", setup[0], setup[1], word(&setup[2]),
                word(&setup[4]));
  std::optional<Bytes> reply;
  {
    const Lock lock(mutex_);
    requests_.emplace_back(text);
    if ((setup[0] & USB_TYPE_MASK) == USB_TYPE_STANDARD) reply = standardReply(setup);
  }
  if (!reply.has_value() && onControl) {
    reply = onControl(setup, {transfer.data, transfer.data == nullptr ? 0 : transfer.length});
  }
  const Lock lock(mutex_);
  if (!reply.has_value()) return host.complete(transfer.id, -EPIPE, nullptr, 0);
  const std::size_t count = transfer.isIn() ? std::min(reply->size(), transfer.length) : transfer.length;
  host.complete(transfer.id, 0, transfer.isIn() ? reply->data() : nullptr, count);
}

std::optional<Bytes> ScriptedDevice::standardReply(const Setup& setup) {
  switch (setup[1]) {
    case USB_REQ_GET_DESCRIPTOR: {
      Bytes found = descriptor(setup[3], setup[2]);
      if (found.empty()) return std::nullopt;
      return found;
    }
    case USB_REQ_CLEAR_FEATURE:
      if (std::equal(std::begin(kClearHalt), std::end(kClearHalt), setup.begin())) {
        endpoints_[setup[4]].isHalted = false;
      }
      return Bytes();
    case USB_REQ_SET_CONFIGURATION:
    case USB_REQ_SET_INTERFACE:
      return Bytes();
    default:
      return std::nullopt;
  }
}

Bytes ScriptedDevice::descriptor(std::uint8_t type, std::uint8_t index) const {
  const auto configuration = descriptors_.begin() + USB_DT_DEVICE_SIZE;
  switch (type) {
    case USB_DT_DEVICE:
      return Bytes(descriptors_.begin(), configuration);
    case USB_DT_CONFIG:
      return Bytes(configuration, descriptors_.end());
    case USB_DT_STRING: {
      if (index == 0) return {4, USB_DT_STRING, 0x09, 0x04};  // English
      if (index > strings_.size()) return {};
      const std::string& text = strings_[index - 1];
      Bytes found = {static_cast<std::uint8_t>(2 + 2 * text.size()), USB_DT_STRING};
      for (const char letter : text) found.insert(found.end(), {static_cast<std::uint8_t>(letter), 0});
      return found;
    }
    default:
      return {};
  }
}

std::size_t ScriptedDevice::packetSize(std::uint8_t endpoint) const {
  for (std::size_t at = 0; at < descriptors_.size(); at += descriptors_[at]) {
    if (descriptors_[at + 1] == USB_DT_ENDPOINT && descriptors_[at + 2] == endpoint) {
      return word(&descriptors_[at + 4]);
    }
  }
  return 1;
}

// What the test asks

std::vector<Bytes> ScriptedDevice::takeReceived(std::uint8_t endpoint) {
  const Lock lock(mutex_);
  return std::exchange(endpoints_[endpoint].received, {});
}

std::vector<std::string> ScriptedDevice::takeRequests() {
  const Lock lock(mutex_);
  return std::exchange(requests_, {});
}

std::size_t ScriptedDevice::waiting(std::uint8_t endpoint) const {
  const Lock lock(mutex_);
  const auto found = endpoints_.find(endpoint);
  return found == endpoints_.end() ? 0 : found->second.waiting.size();
}

}  // namespace qvn::test
