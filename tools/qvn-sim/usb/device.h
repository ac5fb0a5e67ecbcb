// The simulated device on USB: transfers in, their status and length out, exact to the packet. What stands
// behind its endpoints are the device's ports, which see it as a host like any other.
//
// A connection to a port begins when its endpoints are used. It ends when the interface is set up anew, when
// the last host leaves, when the device is unplugged, and where endpoints say so. When the port ends it, an
// endpoint halts.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "faults/fault_switches.h"
#include "net/event_loop.h"
#include "usb/control_requests.h"
#include "usb/descriptors.h"
#include "usb/in_pipe.h"
#include "usb/out_pipe.h"
#include "usb/pipe.h"
#include "usb/port_link.h"
#include "usb/print_pipe.h"
#include "usb/transfer.h"

namespace sim::usb {

// How the device reaches its ports, and its printer's status.
struct Ports {
  std::function<void(Descriptor, std::shared_ptr<const bool> isBroken)> print;
  std::function<void(Descriptor)> bidi;
  std::function<void(Descriptor)> scan;
  std::function<void(Descriptor)> hid;
  std::function<std::uint8_t()> portStatus;
};

class Device {
 public:
  struct Handlers {
    std::function<void(Transfer&&)> onDone;
    std::function<void()> onUnplugged;  // what waits never ends
  };

  // `jobEndsInSilence`: a print job ends with its connection, which ends when no more data comes.
  Device(EventLoop& loop, FaultSwitches& faults, const Description& description, bool jobEndsInSilence,
         Ports ports);

  void handle(Handlers handlers) { handlers_ = std::move(handlers); }
  const Description& description() const { return description_; }

  bool isPlugged() const { return isPlugged_; }
  void plug() { isPlugged_ = true; }
  void unplug();

  // Ends by onDone, also before this returns.
  void submit(Transfer transfer);
  // The transfer as far as it got; nothing when it has ended.
  std::optional<Transfer> cancel(ConnectionId host, std::uint32_t sequence);
  // Drops what the host has waiting.
  void forget(ConnectionId host);
  // As it was when it was plugged.
  void reset() { configure(kConfiguration); }

  // What control requests ask for. 0 is no configuration; false when there is no such setting.
  std::uint8_t configuration() const { return configuration_; }
  bool configure(std::uint8_t value);
  std::optional<std::uint8_t> alternateOf(std::uint8_t interface) const;
  bool select(std::uint8_t interface, std::uint8_t alternate);
  // Null when the device has no such endpoint as it is set up.
  Pipe* pipe(std::uint8_t endpoint);
  void resetPrinter();
  std::uint8_t portStatus() const { return ports_.portStatus(); }

 private:
  // An endpoint, and the connection that stands behind it alone or with others.
  struct Part {
    std::uint8_t interface;
    Pipe& pipe;
    PortLink& link;
  };

  bool has(std::uint8_t interface, std::uint8_t alternate) const;
  // Its endpoints begin anew.
  void setUp(std::uint8_t interface, std::uint8_t alternate);

  const Description description_;
  const std::vector<Interface> interfaces_;
  const Ports ports_;
  Handlers handlers_;
  const Pipe::OnDone onDone_;
  std::shared_ptr<bool> printIsBroken_;
  PortLink printLink_;
  PortLink bidiLink_;
  PortLink scanLink_;
  PortLink hidLink_;
  InPipe packetsIn_;
  const bool jobsEndInSilence_;
  PrintPipe printOut_;
  InPipe scanIn_;
  OutPipe scanOut_;
  InPipe reportsIn_;
  const std::map<std::uint8_t, Part> parts_;  // by the endpoint's address
  ControlRequests control_;
  std::array<std::uint8_t, 3> alternates_{};  // by interface
  std::uint8_t configuration_ = kConfiguration;
  bool isPlugged_ = true;
};

}  // namespace sim::usb
