#include "usbip_host.h"

#include <stdexcept>

namespace qvn::test {
namespace {

constexpr std::uint8_t kIn = 0x80;
constexpr std::size_t kAnswer = 48;
constexpr std::uint32_t kSubmit = 1;
constexpr std::uint32_t kUnlink = 2;
constexpr std::uint32_t kUnlinked = 4;
constexpr std::uint32_t kNoPackets = 0xFFFFFFFF;

std::uint32_t numberAt(const Bytes& bytes, std::size_t offset) {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < 4; ++i) number = number << 8 | bytes.at(offset + i);
  return number;
}

Bytes submission(std::uint32_t flags, std::size_t length, const Bytes& setup) {
  return bigEndian({flags, static_cast<std::uint32_t>(length), 0, kNoPackets, 0}) + setup;
}

}  // namespace

Bytes bigEndian(std::initializer_list<std::uint32_t> numbers) {
  Bytes bytes;
  for (const std::uint32_t number : numbers) {
    for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<std::uint8_t>(number >> shift));
  }
  return bytes;
}

Bytes usbipQuestion(std::uint16_t code, std::string_view busId) {
  return bigEndian({0x01110000u | code, 0}) + bytesOf(busId) + repeated(32 - busId.size(), 0);
}

UsbipHost::UsbipHost(const SimulatorProcess& device)
    : stream_(Stream::connect(device.address(), device.readyLine().at("usb"))) {
  stream_.send(usbipQuestion(0x8003, "1-1"));
  if (toHex(stream_.receive(8)) != "01 11 00 03 00 00 00 00" || stream_.receive(312).size() != 312) {
    throw std::runtime_error("cannot import the device");
  }
}

std::uint32_t UsbipHost::begin(std::uint32_t code, std::uint8_t endpoint, const Bytes& part,
                               const Bytes& data) {
  const std::uint32_t number = ++lastNumber_;
  endpoints_[number] = endpoint;
  const std::uint32_t direction = (endpoint & kIn) != 0 ? 1 : 0;
  stream_.send(bigEndian({code, number, 0x10002, direction, endpoint & 0x7Fu}) + part + data);
  return number;
}

std::uint32_t UsbipHost::beginOut(std::uint8_t endpoint, const Bytes& data, std::uint32_t flags) {
  return begin(kSubmit, endpoint, submission(flags, data.size(), repeated(8, 0)), data);
}

std::uint32_t UsbipHost::beginIn(std::uint8_t endpoint, std::uint32_t length, std::uint32_t flags) {
  return begin(kSubmit, endpoint, submission(flags, length, repeated(8, 0)), {});
}

bool UsbipHost::receive() {
  const Bytes answer = stream_.receive(kAnswer);
  if (answer.size() < kAnswer) throw std::runtime_error("the device is gone");
  const std::uint32_t number = numberAt(answer, 4);
  UsbResult& result = ended_[number];
  result.status = static_cast<int>(numberAt(answer, 20));
  result.length = numberAt(answer, 24);
  const bool isUnlinked = numberAt(answer, 0) == kUnlinked;
  if (!isUnlinked && (endpoints_.at(number) & kIn) != 0) result.data = stream_.receive(result.length);
  return isUnlinked;
}

UsbResult UsbipHost::end(std::uint32_t number) {
  while (!ended_.contains(number)) receive();
  return ended_.extract(number).mapped();
}

std::pair<int, std::optional<UsbResult>> UsbipHost::unlink(std::uint32_t number) {
  const std::uint32_t unlinking = begin(kUnlink, 0, bigEndian({number, 0, 0, 0, 0, 0, 0}), {});
  while (!receive()) {
  }
  const int status = end(unlinking).status;
  return {status, ended_.contains(number) ? std::optional(end(number)) : std::nullopt};
}

UsbResult UsbipHost::control(std::string_view setup) {
  const Bytes bytes = hex(setup);
  const auto length = static_cast<std::size_t>(bytes.at(6) | bytes.at(7) << 8);
  return end(begin(kSubmit, bytes[0] & kIn, submission(0, length, bytes), {}));
}

std::string UsbipHost::ask(std::string_view setup) {
  const UsbResult result = control(setup);
  return result.status == kStalled ? "stall" : toHex(result.data);
}

void UsbipHost::clearHalt(std::uint8_t endpoint) {
  control("02 01 00 00 " + toHex({endpoint}) + " 00 00 00");
}

}  // namespace qvn::test
