#include "usb/control_requests.h"

#include <algorithm>
#include <utility>

#include "base/little_endian.h"
#include "usb/device.h"

namespace sim::usb {
namespace {

// Who a request is to, and whose kind of request it is.
constexpr std::uint8_t kInterface = 0x01;
constexpr std::uint8_t kEndpoint = 0x02;
constexpr std::uint8_t kOther = 0x03;
constexpr std::uint8_t kClass = 0x20;

constexpr std::uint16_t kEndpointHalt = 0;
constexpr std::uint16_t kPortReset = 4;
constexpr std::uint8_t kSelfPowered = 1;

constexpr std::uint8_t lowByte(std::uint16_t value) { return static_cast<std::uint8_t>(value & 0xFF); }
constexpr std::uint8_t highByte(std::uint16_t value) { return static_cast<std::uint8_t>(value >> 8); }

std::optional<Bytes> acknowledge(bool isPossible) {
  return isPossible ? std::optional(Bytes()) : std::nullopt;
}

}  // namespace

const ControlRequests::Known ControlRequests::kKnown[] = {
    {kIn, 0, &ControlRequests::deviceStatus},
    {kIn | kInterface, 0, &ControlRequests::interfaceStatus},
    {kIn | kEndpoint, 0, &ControlRequests::endpointStatus},
    {kEndpoint, 1, &ControlRequests::clearHalt},
    {kEndpoint, 3, &ControlRequests::halt},
    {kIn, 6, &ControlRequests::descriptor},
    {kIn | kInterface, 6, &ControlRequests::interfaceDescriptor},
    {kIn, 8, &ControlRequests::configuration},
    {0, 9, &ControlRequests::setConfiguration},
    {kIn | kInterface, 10, &ControlRequests::alternate},
    {kInterface, 11, &ControlRequests::setAlternate},
    {kIn | kClass | kInterface, 0, &ControlRequests::deviceId},
    {kIn | kClass | kInterface, 1, &ControlRequests::portStatus},
    {kClass | kInterface, 2, &ControlRequests::resetPrinter},
    {kClass | kOther, 2, &ControlRequests::resetPrinter},  // as early hosts ask for it
    {kClass | kInterface, 10, &ControlRequests::setIdle},
    {kClass | kOther, 3, &ControlRequests::resetDevice},  // to the port it is plugged into
};

Setup::Setup(const Transfer& transfer)
    : type(transfer.setup[0]),
      request(transfer.setup[1]),
      value(readLittle16(transfer.setup, 2)),
      index(readLittle16(transfer.setup, 4)),
      length(readLittle16(transfer.setup, 6)) {}

void ControlRequests::carryOut(Transfer& transfer) {
  const Setup setup(transfer);
  const auto known = std::find_if(std::begin(kKnown), std::end(kKnown), [&](const Known& entry) {
    return entry.type == setup.type && entry.request == setup.request;
  });
  const bool isAnswered = (setup.type & kIn) != 0;
  const bool isKnown = known != std::end(kKnown) && transfer.isIn() == isAnswered;
  Answer answer = isKnown ? (this->*known->carryOut)(setup) : std::nullopt;
  if (!answer) {
    transfer.status = Status::Stall;
    return;
  }
  if (!isAnswered) {
    transfer.taken = transfer.length;
    return;
  }
  answer->resize(std::min({answer->size(), std::size_t{setup.length}, transfer.length}));
  transfer.data = std::move(*answer);
}

ControlRequests::Answer ControlRequests::deviceStatus(const Setup&) { return Bytes{kSelfPowered, 0}; }

ControlRequests::Answer ControlRequests::interfaceStatus(const Setup& setup) {
  return device_.alternateOf(lowByte(setup.index)) ? std::optional(Bytes{0, 0}) : std::nullopt;
}

ControlRequests::Answer ControlRequests::endpointStatus(const Setup& setup) {
  const std::uint8_t address = lowByte(setup.index);
  if ((address & ~kIn) == 0) return Bytes{0, 0};
  const Pipe* const pipe = device_.pipe(address);
  if (pipe == nullptr) return std::nullopt;
  return Bytes{static_cast<std::uint8_t>(pipe->isHalted() ? 1 : 0), 0};
}

ControlRequests::Answer ControlRequests::clearHalt(const Setup& setup) {
  Pipe* const pipe = device_.pipe(lowByte(setup.index));
  if (pipe == nullptr || setup.value != kEndpointHalt) return std::nullopt;
  pipe->clearHalt();
  return Bytes();
}

ControlRequests::Answer ControlRequests::halt(const Setup& setup) {
  Pipe* const pipe = device_.pipe(lowByte(setup.index));
  if (pipe == nullptr || setup.value != kEndpointHalt) return std::nullopt;
  pipe->halt();
  return Bytes();
}

ControlRequests::Answer ControlRequests::descriptor(const Setup& setup) {
  const std::uint8_t type = highByte(setup.value);
  if (type == kHidDescriptor || type == kReportDescriptor) return std::nullopt;
  return usb::descriptor(device_.description(), type, lowByte(setup.value));
}

ControlRequests::Answer ControlRequests::interfaceDescriptor(const Setup& setup) {
  const std::uint8_t type = highByte(setup.value);
  if (setup.index != kPanelInterface || (type != kHidDescriptor && type != kReportDescriptor)) {
    return std::nullopt;
  }
  return usb::descriptor(device_.description(), type, lowByte(setup.value));
}

ControlRequests::Answer ControlRequests::configuration(const Setup&) {
  return Bytes{device_.configuration()};
}

ControlRequests::Answer ControlRequests::setConfiguration(const Setup& setup) {
  return acknowledge(highByte(setup.value) == 0 && device_.configure(lowByte(setup.value)));
}

ControlRequests::Answer ControlRequests::alternate(const Setup& setup) {
  const auto alternate = device_.alternateOf(lowByte(setup.index));
  return alternate ? std::optional(Bytes{*alternate}) : std::nullopt;
}

ControlRequests::Answer ControlRequests::setAlternate(const Setup& setup) {
  const bool areBytes = highByte(setup.index) == 0 && highByte(setup.value) == 0;
  return acknowledge(areBytes && device_.select(lowByte(setup.index), lowByte(setup.value)));
}

ControlRequests::Answer ControlRequests::deviceId(const Setup& setup) {
  if (highByte(setup.index) != kPrinterInterface || faults_.strike(UsbFault::NoId)) return std::nullopt;
  if (faults_.strike(UsbFault::EmptyId)) return emptyDeviceId();
  const bool isLittle = faults_.strike(UsbFault::LittleId).has_value();
  return usb::deviceId(device_.description(), isLittle ? IdLength::LittleEndian : IdLength::BigEndian);
}

ControlRequests::Answer ControlRequests::portStatus(const Setup& setup) {
  return setup.index == kPrinterInterface ? std::optional(Bytes{device_.portStatus()}) : std::nullopt;
}

ControlRequests::Answer ControlRequests::resetPrinter(const Setup& setup) {
  if (setup.index != kPrinterInterface) return std::nullopt;
  device_.resetPrinter();
  return Bytes();
}

ControlRequests::Answer ControlRequests::setIdle(const Setup& setup) {
  return acknowledge(setup.index == kPanelInterface && device_.alternateOf(kPanelInterface).has_value());
}

ControlRequests::Answer ControlRequests::resetDevice(const Setup& setup) {
  if (setup.value != kPortReset) return std::nullopt;
  device_.reset();
  return Bytes();
}

}  // namespace sim::usb
