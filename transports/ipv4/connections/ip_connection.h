// What the connections of this transport have in common.
#pragma once

#include <cstdint>

#include "net/tcp_socket.h"
#include "qvn/result_codes.h"
#include "qvn/transport/connectable.h"

namespace qvn::ipv4 {

class IpConnection : public Connectable {
 public:
  // Where the device is; the next open goes there. Called whenever the connection is asked for.
  virtual void setEndpoint(const Endpoint& endpoint) = 0;
};

// A connection without a channel of its own: its visitors do all there is to do.
class ChannellessConnection : public IpConnection {
 public:
  explicit ChannellessConnection(std::uint32_t openCode) : openCode_(openCode) {}
  void setEndpoint(const Endpoint&) override {}
  std::uint32_t doOpen() override { return openCode_; }

 private:
  const std::uint32_t openCode_;
};

}  // namespace qvn::ipv4
