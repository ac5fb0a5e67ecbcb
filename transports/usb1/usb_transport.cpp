#include <memory>

#include "base/transport_identity.h"
#include "bus/known_devices.h"
#include "bus/usb_bus.h"
#include "bus/usb_interface.h"
#include "discovery/usb_discoverer.h"
#include "qvn/result_codes.h"
#include "shared/connections/device_connections.h"
#include "shared/transport.h"
#include "shared/visitors/device_visitors.h"
#include "usb_places.h"

namespace qvn::usb1 {
namespace {

class UsbTransport : public shared::Transport {
 public:
  std::uint32_t start() override {
    const std::uint32_t rc = bus_.start();
    if (rc == QRN_ERROR_SUCCESS) devices_.start();
    return rc;
  }

  ConnectionManager& connectionManager() override { return connections_; }
  VisitorManager& visitorManager() override { return visitors_; }
  Discoverer& discoverer() override { return discoverer_; }

 private:
  UsbBus bus_;
  KnownDevices devices_{bus_};
  UsbInterfaces interfaces_{bus_};
  const UsbPlaces places_{devices_, interfaces_};
  shared::DeviceConnections connections_{places_};
  shared::DeviceVisitors visitors_{connections_, places_};
  UsbDiscoverer discoverer_{devices_};
};

}  // namespace
}  // namespace qvn::usb1

namespace qvn::shared {

const TransportIdentity kTransportIdentity = usb1::kTransport;

std::unique_ptr<Transport> makeTransport() { return std::make_unique<usb1::UsbTransport>(); }

}  // namespace qvn::shared
