// The "bidi" connection of a scanner: sends ESC commands and brings what the scanner sends.
#pragma once

#include <cstddef>

#include "qvn/transport/data.h"
#include "qvn/transport/device.h"
#include "qvn/transport/esc_command_table.h"
#include "shared/connections/session_connection.h"
#include "shared/sessions/esc_session.h"

namespace qvn::shared {

// Connected anew, the scanner has forgotten what it was told before: the parameters of a scan and a lock end
// with their connection.
class EscConnection : public SessionConnection<EscSession> {
 public:
  using SessionConnection::SessionConnection;

  // Sends all of the data without waiting for a reply. What went out is consumed and counted: 1460 when the
  // scanner took nothing for the time-out, 64 when it ended the connection, 1229 when it is not open.
  void write(Data& data) override;

  // Sends the request, and waits for its reply if there is to be one. Returns 0 when the exchange was carried
  // out, with the request's code 0, or 1460 for no reply; else the code of both. The request's count is the
  // number of bytes sent: all or, on failure, 0. Any thread but the session's own; threads take turns.
  std::uint32_t exchange(Data& request, Device& device);

 private:
  bool isUsable(const EscSession& session, Session::Bytes bytes) const override;
  // Sends without waiting for a reply: 0, or why not all went out, with what did in `sent`. With turn_ held.
  std::uint32_t send(esc::Bytes bytes, std::size_t& sent);
};

}  // namespace qvn::shared
