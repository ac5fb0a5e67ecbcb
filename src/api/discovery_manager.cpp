#include "api/discovery_manager.h"

#include "common/exception.h"
#include "common/logging/trace_scope.h"
#include "common/tasks/observation.h"
#include "device/factories/device_factories.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "qvn/transport/device.h"
#include "qvn/transport/discoverer.h"
#include "transport/call_transport.h"
#include "transport/transports.h"

namespace qvn {

template <typename Call>
std::uint32_t DiscoveryManager::ask(const std::string& transport, const char* what, Call&& call) {
  try {
    const auto discoverer = Transports::getInstance().getDiscoverer(transport);
    return transportResult(what, [&] {
      const Observation observation(*this, *discoverer.service);
      return call(*discoverer.service);
    });
  } catch (...) {
    return codeOfCurrentException();
  }
}

std::uint32_t DiscoveryManager::discover(const std::string& transport, const std::string& options) {
  TraceScope trace(BasicLogger::getInstance(), log_component::server(),
                   [] { return LogText() << "DiscoveryManager::discover()"; });
  const std::uint32_t rc =
      ask(transport, "discover", [&](Discoverer& discoverer) { return discoverer.discover(options); });
  trace.setRc(rc);
  return rc;
}

std::uint32_t DiscoveryManager::discoverSpecific(const std::string& deviceAttributes) {
  TraceScope trace(BasicLogger::getInstance(), log_component::server(),
                   [] { return LogText() << "DiscoveryManager::discoverSpecific()"; });
  std::string transport;
  std::uint32_t rc = AttributeCodec::getString(deviceAttributes, attribute::kTransport, transport);
  if (rc == QRN_ERROR_SUCCESS) {
    rc = ask(transport, "discoverSpecific",
             [&](Discoverer& discoverer) { return discoverer.discoverSpecific(deviceAttributes); });
  }
  trace.setRc(rc);
  return rc;
}

void DiscoveryManager::doUpdate(const std::string& deviceAttributes) {
  logDetail(log_component::server(), [&] { return LogText() << "Discovered device: " << deviceAttributes; });
  const auto device = DeviceFactories::getInstance().makeDevice(deviceAttributes);
  if (device == nullptr) return;
  device->update();
}

}  // namespace qvn
