// An endpoint that sends what comes from a port, as transfers ask for it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/bytes.h"
#include "faults/fault_switches.h"
#include "net/event_loop.h"
#include "usb/idle_watch.h"
#include "usb/pipe.h"
#include "usb/port_link.h"

namespace sim::usb {

class InPipe : public Pipe {
 public:
  // What a short packet ends, besides a full transfer.
  enum class Units : std::uint8_t {
    Stream,    // what there is at the time
    Messages,  // each message of the port
    Reports,  // each report or event of the button panel; nobody waits for those that come while no host asks
  };

  InPipe(EventLoop& loop, FaultSwitches& faults, PortLink& link, Units units, std::size_t packetSize,
         const OnDone& onDone);

  void serve() override;
  void discard() override;
  // The port has ended the connection, and what it sent before is lost.
  void portEnded();

 private:
  // How many bytes of the unit that goes next are here; 0 when none has come.
  std::size_t fetch();
  std::size_t wholeUnit() const;
  void transfer();
  // Passes over the first bytes of the unit. A unit that ends in a full packet is ended by an empty one.
  void advance(std::size_t count);

  FaultSwitches& faults_;
  PortLink& link_;
  const Units units_;
  const std::size_t packetSize_;
  Bytes buffer_;
  std::size_t sent_ = 0;  // of the buffer
  std::size_t unit_ = 0;  // what is left of the unit that goes now
  bool emptyPacketIsDue_ = false;
  bool gaveZero_ = false;  // the transfer before the next real one, by a fault
  bool portHasEnded_ = false;
  IdleWatch idle_;
};

}  // namespace sim::usb
