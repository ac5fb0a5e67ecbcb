// An endpoint that takes a stream of bytes for a port.
#pragma once

#include <functional>

#include "usb/pipe.h"
#include "usb/port_feed.h"
#include "usb/port_link.h"

namespace sim::usb {

class OutPipe : public Pipe {
 public:
  // `onPortEnded`: the port has ended the connection. What comes after that goes over a new one.
  OutPipe(PortLink& link, std::function<void()> onPortEnded, const OnDone& onDone);

  void serve() override;
  void discard() override;

 private:
  PortFeed feed_;
  const std::function<void()> onPortEnded_;
};

}  // namespace sim::usb
