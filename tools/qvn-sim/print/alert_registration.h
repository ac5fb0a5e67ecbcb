// Which alerts a host has asked for on its connection.
#pragma once

#include <cstdint>

#include "base/bytes.h"
#include "print/npa_packets.h"

namespace sim {

class AlertRegistration {
 public:
  // Takes over the bytes of a registration command; false when it is not one.
  bool apply(npa::Command command, ByteView packet);

  // Whether an alert is one of those. Resets, status changes and cancel acknowledgements are told unasked.
  bool covers(ByteView alert) const;
  // Whether to tell how jobs change the status as well, which would get in the way of hosts that do not
  // listen.
  bool coversJobs() const;

 private:
  std::uint8_t extension_ = 0;
  bool panel_ = false;
  std::uint8_t extended_ = 0;
  std::uint8_t languageByte9_ = 0;
  std::uint8_t languageByte10_ = 0;
};

}  // namespace sim
