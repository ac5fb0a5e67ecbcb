// The module's face to the library.
#include <cstring>
#include <string>

#include "base/transport_identity.h"
#include "connections/ip_connection_manager.h"
#include "discovery/ip_discoverer.h"
#include "ip_visitor_manager.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "qvn/transport/connection_manager.h"
#include "qvn/transport/discoverer.h"
#include "qvn/transport/plugin.h"
#include "qvn/transport/visitor_manager.h"

namespace {

using namespace qvn;
using namespace qvn::ipv4;

// Exists, like every thread of the module, between TransportInitialize and TransportUninitialize. What a
// process that ends without the latter leaves behind nobody ends: its end would wait for threads that a child
// made by fork has not got.
struct Transport {
  IpConnectionManager connectionManager;
  IpVisitorManager visitorManager{connectionManager};
  IpDiscoverer discoverer;
};
Transport* transport = nullptr;

}  // namespace

QVN_TRANSPORT_EXPORT std::uint32_t TransportGetInfo(char* buffer, std::uint32_t size, std::uint32_t*) {
  std::string text;
  AttributeCodec::setString(text, attribute::kTransport, kTransportName);
  AttributeCodec::setString(text, attribute::kTransportType, kTransportKind);
  if (buffer == nullptr) return QRN_ERROR_INVALID_PARAMETER;
  if (text.size() >= size) return QRN_ERROR_INSUFFICIENT_BUFFER;
  std::memcpy(buffer, text.c_str(), text.size() + 1);
  return QRN_ERROR_SUCCESS;
}

QVN_TRANSPORT_EXPORT std::uint32_t TransportInitialize() {
  transport = new Transport;
  return QRN_ERROR_SUCCESS;
}

QVN_TRANSPORT_EXPORT std::uint32_t TransportUninitialize() {
  transport->connectionManager.closeAll();
  transport->discoverer.finish();
  delete transport;
  transport = nullptr;
  return QRN_ERROR_SUCCESS;
}

QVN_TRANSPORT_EXPORT std::uint32_t TransportInstall() { return QRN_ERROR_SUCCESS; }
QVN_TRANSPORT_EXPORT std::uint32_t TransportUninstall() { return QRN_ERROR_SUCCESS; }

QVN_TRANSPORT_EXPORT ConnectionManager* TransportGetConnectionManager() {
  return &transport->connectionManager;
}
QVN_TRANSPORT_EXPORT VisitorManager* TransportGetVisitorManager() { return &transport->visitorManager; }
QVN_TRANSPORT_EXPORT Discoverer* TransportGetDiscoverer() { return &transport->discoverer; }

QVN_TRANSPORT_EXPORT std::uint32_t TransportGetAbiVersion() { return QVN_TRANSPORT_ABI_VERSION; }
