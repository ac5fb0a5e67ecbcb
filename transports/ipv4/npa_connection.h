// The "bidi" connection: exchanges NPA packets and brings the device's alerts.
#pragma once

#include <map>
#include <memory>
#include <mutex>

#include "ip_connection.h"
#include "npa_session.h"
#include "qvn/transport/data.h"
#include "qvn/transport/device.h"
#include "retired_sessions.h"

namespace qvn::ipv4 {

// Connected from the first open until the last close, and on while it is tagged, so that alerts keep coming.
// A connection that the device ended, or on which a late reply could be taken for another one, is replaced
// before the next exchange; the device then gets the alert registrations again, which ended with the old one.
class NpaConnection : public IpConnection {
 public:
  explicit NpaConnection(RetiredSessions& retired) : retired_(retired) {}
  ~NpaConnection() override;

  void setEndpoint(const Endpoint& endpoint) override;

  std::uint32_t doOpen() override;
  std::uint32_t doClose() override;
  void setTag(std::uint32_t tag) override;

  // Returns 0 when the exchange was carried out, with the request's code 0 for a reply and 1460 for none;
  // else the code of both. The request's count is the number of bytes sent: all or, on failure, 0. Any
  // thread, also from inside an alert of this connection; threads take turns.
  std::uint32_t exchange(Data& request, Device& device);

  // Sends a packet to which there is no reply, in turn with the exchanges. 0 when it was sent, else why not.
  std::uint32_t send(Data& packet, Device& device);

 private:
  // The session to use, a new one where the old one cannot take the packet; with exchangeMutex_ held.
  std::uint32_t readySession(PacketView packet, Device& device, std::shared_ptr<NpaSession>& session);
  std::uint32_t replaceSession(const std::shared_ptr<NpaSession>& old, Device& device,
                               std::shared_ptr<NpaSession>& replacement);
  void remember(PacketView request);
  void endSessionLocked();
  bool isWantedLocked() const { return opened_ || getTag() != 0; }

  RetiredSessions& retired_;

  std::mutex exchangeMutex_;                // one exchange at a time; taken before mutex_
  std::map<Packet, Packet> registrations_;  // by lasting effect; guarded by exchangeMutex_

  std::mutex mutex_;  // guards what follows
  Endpoint endpoint_;
  Timeouts timeouts_{};
  bool opened_ = false;
  std::shared_ptr<NpaSession> session_;
};

}  // namespace qvn::ipv4
