// Notification: what has changed about a device, told to the clients that registered for it.
#pragma once

#include <cstdint>

#include "qvn/transport/data.h"

namespace qvn {

struct Notification {
  std::uint32_t handle = 0;
  // What kind of change: 2 for the events of a HID.
  std::uint32_t category = 0;
  std::uint32_t id = 0;
  Data data;
};

}  // namespace qvn
