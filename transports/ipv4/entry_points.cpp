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

// Made with the module and gone with it; threads exist only between TransportInitialize and
// TransportUninitialize.
IpConnectionManager connectionManager;
IpVisitorManager visitorManager(connectionManager);
IpDiscoverer discoverer;

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

QVN_TRANSPORT_EXPORT std::uint32_t TransportInitialize() { return QRN_ERROR_SUCCESS; }

QVN_TRANSPORT_EXPORT std::uint32_t TransportUninitialize() {
  connectionManager.closeAll();
  discoverer.finish();
  return QRN_ERROR_SUCCESS;
}

QVN_TRANSPORT_EXPORT std::uint32_t TransportInstall() { return QRN_ERROR_SUCCESS; }
QVN_TRANSPORT_EXPORT std::uint32_t TransportUninstall() { return QRN_ERROR_SUCCESS; }

QVN_TRANSPORT_EXPORT ConnectionManager* TransportGetConnectionManager() { return &connectionManager; }
QVN_TRANSPORT_EXPORT VisitorManager* TransportGetVisitorManager() { return &visitorManager; }
QVN_TRANSPORT_EXPORT Discoverer* TransportGetDiscoverer() { return &discoverer; }

QVN_TRANSPORT_EXPORT std::uint32_t TransportGetAbiVersion() { return QVN_TRANSPORT_ABI_VERSION; }
