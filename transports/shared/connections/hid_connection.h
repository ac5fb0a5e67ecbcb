// The "alert" connection of a HID, on which it sends its reports and events.
#pragma once

#include "qvn/transport/device.h"
#include "shared/connections/session_connection.h"
#include "shared/sessions/hid_session.h"

namespace qvn::shared {

class HidConnection : public SessionConnection<HidSession> {
 public:
  using SessionConnection::SessionConnection;

  // Connects anew when the HID has ended the connection. 0, or why it could not.
  std::uint32_t revive(Device& device);
};

}  // namespace qvn::shared
