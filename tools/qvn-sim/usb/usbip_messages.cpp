#include "usb/usbip_messages.h"

#include <algorithm>

#include "base/big_endian.h"

namespace sim::usb::usbip {
namespace {

constexpr std::uint16_t kDevicesAnswer = 0x0005;
constexpr std::uint16_t kImportAnswer = 0x0003;
constexpr std::uint32_t kOk = 0;
constexpr std::uint32_t kNoDevice = 4;

constexpr std::string_view kPath = "/sys/devices/qvn-sim/usb1/1-1";
constexpr std::size_t kPathLength = 256;
constexpr std::uint32_t kBus = 1;
constexpr std::uint32_t kDeviceNumber = 2;
constexpr std::uint32_t kHighSpeed = 3;

constexpr std::uint32_t kSubmitAnswer = 3;
constexpr std::uint32_t kUnlinkAnswer = 4;
constexpr std::size_t kPartByCode = 28;

// What the number of packets is of a transfer that is not isochronous.
constexpr std::uint32_t kNoPackets = 0xFFFFFFFF;

constexpr std::uint32_t kIn = 1;
constexpr std::uint32_t kMostEndpoints = 16;

void appendText(Bytes& to, std::string_view text, std::size_t length) {
  to.insert(to.end(), text.begin(), text.end());
  to.resize(to.size() + length - text.size());
}

Bytes answer(std::uint16_t code, std::uint32_t status) {
  Bytes bytes;
  appendBig16(bytes, kVersion);
  appendBig16(bytes, code);
  appendBig32(bytes, status);
  return bytes;
}

std::size_t interfacesIn(const std::vector<Interface>& settings) {
  return static_cast<std::size_t>(std::count_if(
      settings.begin(), settings.end(), [](const Interface& setting) { return setting.alternate == 0; }));
}

void appendDevice(Bytes& to, const Description& device) {
  appendText(to, kPath, kPathLength);
  appendText(to, kBusId, kBusIdLength);
  for (const std::uint32_t number : {kBus, kDeviceNumber, kHighSpeed}) appendBig32(to, number);
  for (const std::uint16_t number : {kVendor, kProduct, kRelease}) appendBig16(to, number);
  const auto interfaces = static_cast<std::uint8_t>(interfacesIn(interfacesOf(device)));
  // Its class is told by its interfaces.
  to.insert(to.end(), {0, 0, 0, kConfiguration, 1, interfaces});
}

Bytes commandAnswer(std::uint32_t code, std::uint32_t sequence, Status status) {
  Bytes bytes;
  appendBig32(bytes, code);
  appendBig32(bytes, sequence);
  for (int unused = 0; unused < 3; ++unused) appendBig32(bytes, 0);
  appendBig32(bytes, static_cast<std::uint32_t>(status));
  return bytes;
}

}  // namespace

std::size_t questionLength(ByteView header) {
  BigEndianReader reader(header);
  const bool isKnown = reader.u16() == kVersion;
  const bool isImport = reader.u16() == static_cast<std::uint16_t>(QuestionCode::Import);
  return kQuestionHeader + (isKnown && isImport ? kBusIdLength : 0);
}

std::optional<Question> readQuestion(ByteView message) {
  BigEndianReader reader(message);
  if (reader.u16() != kVersion) return std::nullopt;
  const auto code = static_cast<QuestionCode>(reader.u16());
  reader.u32();
  if (!reader.isGood()) return std::nullopt;
  if (code == QuestionCode::Devices) return Question{code, false};
  if (code != QuestionCode::Import) return std::nullopt;
  const ByteView busId = reader.bytes(kBusIdLength);
  const std::string_view text(reinterpret_cast<const char*>(busId.data()), busId.size());
  return Question{code, text.substr(0, text.find('\0')) == kBusId};
}

Bytes devicesAnswer(const Description* device) {
  Bytes bytes = answer(kDevicesAnswer, kOk);
  appendBig32(bytes, device == nullptr ? 0 : 1);
  if (device == nullptr) return bytes;
  appendDevice(bytes, *device);
  for (const Interface& setting : interfacesOf(*device)) {
    if (setting.alternate != 0) continue;
    bytes.insert(bytes.end(), {setting.interfaceClass, setting.subclass, setting.protocol, 0});
  }
  return bytes;
}

Bytes importAnswer(const Description* device) {
  Bytes bytes = answer(kImportAnswer, device == nullptr ? kNoDevice : kOk);
  if (device != nullptr) appendDevice(bytes, *device);
  return bytes;
}

std::size_t commandLength(ByteView header) {
  const auto command = readCommand(header.first(std::min(header.size(), kCommandLength)));
  const bool hasData = command && command->code == CommandCode::Submit && (command->endpoint & usb::kIn) == 0;
  return kCommandLength + (hasData ? command->length : 0);
}

std::optional<Command> readCommand(ByteView message) {
  BigEndianReader reader(message);
  Command command{};
  command.code = static_cast<CommandCode>(reader.u32());
  command.sequence = reader.u32();
  reader.u32();  // there is one device
  const std::uint32_t direction = reader.u32();
  const std::uint32_t endpoint = reader.u32();
  const ByteView part = reader.bytes(kPartByCode);
  if (!reader.isGood() || direction > kIn || endpoint >= kMostEndpoints) return std::nullopt;
  command.endpoint = static_cast<std::uint8_t>(endpoint | (direction == kIn ? usb::kIn : 0));
  BigEndianReader byCode(part);
  if (command.code == CommandCode::Unlink) {
    command.unlinked = byCode.u32();
    return command;
  }
  if (command.code != CommandCode::Submit) return std::nullopt;
  command.flags = byCode.u32();
  command.length = byCode.u32();
  byCode.u32();
  const std::uint32_t packets = byCode.u32();
  byCode.u32();
  const ByteView setup = byCode.bytes(command.setup.size());
  std::copy(setup.begin(), setup.end(), command.setup.begin());
  if (packets != 0 && packets != kNoPackets) return std::nullopt;
  if (direction != kIn && command.length > kLongestTransfer) return std::nullopt;
  command.data = reader.rest();
  return command;
}

Bytes submitAnswer(const Transfer& transfer) {
  Bytes bytes = commandAnswer(kSubmitAnswer, transfer.sequence, transfer.status);
  appendBig32(bytes, static_cast<std::uint32_t>(transfer.transferred()));
  bytes.resize(kCommandLength);
  if (transfer.isIn()) bytes.insert(bytes.end(), transfer.data.begin(), transfer.data.end());
  return bytes;
}

Bytes unlinkAnswer(std::uint32_t sequence, Status status) {
  Bytes bytes = commandAnswer(kUnlinkAnswer, sequence, status);
  bytes.resize(kCommandLength);
  return bytes;
}

}  // namespace sim::usb::usbip
