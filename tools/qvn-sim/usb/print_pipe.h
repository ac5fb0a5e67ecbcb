// The endpoint that takes print data and NPA packets.
//
// What a host sends between two short packets is a unit. One that begins with A5 and is as long as its length
// field says is an NPA packet; everything else is print data, which is passed on as soon as it can be nothing
// else.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

#include "base/bytes.h"
#include "faults/fault_switches.h"
#include "net/event_loop.h"
#include "usb/idle_watch.h"
#include "usb/pipe.h"
#include "usb/port_feed.h"
#include "usb/port_link.h"

namespace sim::usb {

class PrintPipe : public Pipe {
 public:
  struct Events {
    std::function<void()> onBidiEnded;  // the bidi port has ended the connection
    std::function<void()> onUnplug;     // a fault
  };

  // `endsInSilence`: the connection to the print port ends when no more data comes.
  PrintPipe(EventLoop& loop, FaultSwitches& faults, PortLink& print, PortLink& bidi, bool endsInSilence,
            Events events, const OnDone& onDone);

  // Whether NPA packets are told from print data; not at first.
  void tellPackets(bool tells) { tellsPackets_ = tells; }

  // Ends the connection to the print port, with all that was taken as print data. A unit that has begun and
  // may become a packet is print data too, unless it is to be forgotten.
  void endPrintData(bool forgetsUnit);

  void serve() override;
  void discard() override;

 private:
  enum class Unit : std::uint8_t { Begins, Undecided, PrintData };

  // Both of them: false when a port has yet to read, or the pipe was halted.
  bool flush();
  std::size_t hold(ByteView packets);
  // Nothing when the pipe was halted, or unplugged.
  std::optional<std::size_t> takePrintData(ByteView packets);
  void endUnit();
  void passHeldOn();
  void count(std::size_t printData);

  FaultSwitches& faults_;
  PortFeed print_;
  PortFeed bidi_;
  const bool endsInSilence_;
  const Events events_;
  IdleWatch silence_;
  bool tellsPackets_ = false;
  Unit unit_ = Unit::Begins;
  Bytes held_;  // of a unit that may become a packet
  std::uint64_t sinceStall_ = 0;
  std::uint64_t sincePlugged_ = 0;
};

}  // namespace sim::usb
