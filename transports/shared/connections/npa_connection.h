// The "bidi" connection: exchanges NPA packets and brings the device's alerts.
#pragma once

#include <map>

#include "qvn/transport/data.h"
#include "qvn/transport/device.h"
#include "shared/connections/session_connection.h"
#include "shared/sessions/npa_session.h"
#include "shared/streams/npa_stream.h"

namespace qvn::shared {

// Connected anew, the device gets the alert registrations again, which ended with the old connection.
class NpaConnection : public SessionConnection<NpaSession> {
 public:
  using SessionConnection::SessionConnection;

  // Returns 0 when the exchange was carried out, with the request's code 0 for a reply and 1460 for none;
  // else the code of both. The request's count is the number of bytes sent: all or, on failure, 0. Any
  // thread, also from inside an alert of this connection; threads take turns.
  std::uint32_t exchange(Data& request, Device& device);

  // Sends a packet to which there is no reply, in turn with the exchanges. 0 when it was sent, else why not.
  std::uint32_t send(Data& packet, Device& device);

 private:
  bool isUsable(const NpaSession& session, Session::Bytes packet) const override;
  void prepare(NpaSession& session) override;
  void remember(PacketView request);

  std::map<Packet, Packet> registrations_;  // by lasting effect; guarded by turn_
};

}  // namespace qvn::shared
