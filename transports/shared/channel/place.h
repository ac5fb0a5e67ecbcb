// Where a part of a device is, so that channels to it can be had, and what a transport knows of its places.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "shared/channel/channel.h"

namespace qvn::shared {

// In milliseconds.
struct Timeouts {
  std::uint32_t connect;     // until there is a channel
  std::uint32_t npaWrite;    // until a packet, command or document has gone out
  std::uint32_t reply;       // from the packet, command or document to its reply
  std::uint32_t printWrite;  // without the device taking any print data
};

class Place {
 public:
  virtual ~Place() = default;

  // As they are set now.
  virtual Timeouts timeouts() const = 0;

  // 0 and a channel, or why there is none.
  virtual std::uint32_t connect(const Timeouts& timeouts, std::unique_ptr<Channel>& channel) const = 0;
};

// Of the devices of a transport, from their attribute texts. Any thread.
class DevicePlaces {
 public:
  virtual ~DevicePlaces() = default;

  // Where the device takes print data, or whatever else it takes and says. Never null: what a text does not
  // say fails when it is connected to.
  virtual std::shared_ptr<const Place> printPlace(const std::string& deviceAttributes) const = 0;
  virtual std::shared_ptr<const Place> talkPlace(const std::string& deviceAttributes) const = 0;

  // A printer that takes print data only.
  virtual bool isPlain(const std::string& deviceAttributes) const = 0;

  // Whether the text says where a device of this transport is.
  virtual bool isPlaced(const std::string& deviceAttributes) const = 0;
};

}  // namespace qvn::shared
