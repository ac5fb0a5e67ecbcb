// Where the devices of this transport are: at an IPv4 address, each part behind a TCP port.
#pragma once

#include <memory>
#include <string>

#include "shared/channel/place.h"

namespace qvn::ipv4 {

// "Address", "IpPort" (print data) and "ChannelId" (a printer's NPA packets, a scanner's commands or
// documents, a HID's reports) of the attribute text. A printer without a "ChannelId", or with 0, takes print
// data only.
class IpPlaces : public shared::DevicePlaces {
 public:
  std::shared_ptr<const shared::Place> printPlace(const std::string& deviceAttributes) const override;
  std::shared_ptr<const shared::Place> talkPlace(const std::string& deviceAttributes) const override;
  bool isPlain(const std::string& deviceAttributes) const override;
  bool isPlaced(const std::string& deviceAttributes) const override;
};

}  // namespace qvn::ipv4
