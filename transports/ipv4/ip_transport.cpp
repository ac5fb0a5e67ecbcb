#include <memory>

#include "base/transport_identity.h"
#include "discovery/ip_discoverer.h"
#include "ip_places.h"
#include "shared/connections/device_connections.h"
#include "shared/transport.h"
#include "shared/visitors/device_visitors.h"

namespace qvn::ipv4 {
namespace {

class IpTransport : public shared::Transport {
 public:
  ~IpTransport() override { discoverer_.finish(); }

  ConnectionManager& connectionManager() override { return connections_; }
  VisitorManager& visitorManager() override { return visitors_; }
  Discoverer& discoverer() override { return discoverer_; }

 private:
  const IpPlaces places_{};
  shared::DeviceConnections connections_{places_};
  shared::DeviceVisitors visitors_{connections_, places_};
  IpDiscoverer discoverer_;
};

}  // namespace
}  // namespace qvn::ipv4

namespace qvn::shared {

const TransportIdentity kTransportIdentity = ipv4::kTransport;

std::unique_ptr<Transport> makeTransport() { return std::make_unique<ipv4::IpTransport>(); }

}  // namespace qvn::shared
