// What the connections of all transports have in common.
#pragma once

#include <cstdint>
#include <memory>

#include "qvn/result_codes.h"
#include "qvn/transport/connectable.h"
#include "shared/channel/place.h"

namespace qvn::shared {

class TransportConnection : public Connectable {
 public:
  // Where the device is; the next open goes there. Called whenever the connection is asked for.
  virtual void setPlace(std::shared_ptr<const Place> place) = 0;
};

// A connection without a channel of its own: its visitors do all there is to do.
class ChannellessConnection : public TransportConnection {
 public:
  explicit ChannellessConnection(std::uint32_t openCode) : openCode_(openCode) {}
  void setPlace(std::shared_ptr<const Place>) override {}
  std::uint32_t doOpen() override { return openCode_; }

 private:
  const std::uint32_t openCode_;
};

}  // namespace qvn::shared
