// The control requests that the device carries out: the standard ones, those of printers and of HIDs. Others
// stall.
#pragma once

#include <cstdint>
#include <optional>

#include "base/bytes.h"
#include "faults/fault_switches.h"
#include "usb/transfer.h"

namespace sim::usb {

class Device;

// The first bytes of a request.
struct Setup {
  explicit Setup(const Transfer& transfer);

  std::uint8_t type;
  std::uint8_t request;
  std::uint16_t value;
  std::uint16_t index;
  std::uint16_t length;
};

class ControlRequests {
 public:
  ControlRequests(Device& device, FaultSwitches& faults) : device_(device), faults_(faults) {}

  void carryOut(Transfer& transfer);

 private:
  // What the device answers; nothing when it stalls.
  using Answer = std::optional<Bytes>;
  struct Known {
    std::uint8_t type;
    std::uint8_t request;
    Answer (ControlRequests::*carryOut)(const Setup&);
  };
  static const Known kKnown[];

  Answer deviceStatus(const Setup&);
  Answer interfaceStatus(const Setup& setup);
  Answer endpointStatus(const Setup& setup);
  Answer clearHalt(const Setup& setup);
  Answer halt(const Setup& setup);
  Answer descriptor(const Setup& setup);
  Answer interfaceDescriptor(const Setup& setup);
  Answer configuration(const Setup&);
  Answer setConfiguration(const Setup& setup);
  Answer alternate(const Setup& setup);
  Answer setAlternate(const Setup& setup);
  Answer deviceId(const Setup& setup);
  Answer portStatus(const Setup& setup);
  Answer resetPrinter(const Setup& setup);
  Answer setIdle(const Setup& setup);
  Answer resetDevice(const Setup& setup);

  Device& device_;
  FaultSwitches& faults_;
};

}  // namespace sim::usb
