// A transport module's face to the library.
#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "qvn/transport/plugin.h"
#include "shared/transport.h"

namespace {

using namespace qvn;
using namespace qvn::shared;

// What a process that ends without TransportUninitialize leaves behind nobody ends: its end would wait for
// threads that a child made by fork has not got.
Transport* transport = nullptr;

}  // namespace

QVN_TRANSPORT_EXPORT std::uint32_t TransportGetInfo(char* buffer, std::uint32_t size, std::uint32_t*) {
  std::string text;
  AttributeCodec::setString(text, attribute::kTransport, kTransportIdentity.name);
  AttributeCodec::setString(text, attribute::kTransportType, kTransportIdentity.kind);
  if (buffer == nullptr) return QRN_ERROR_INVALID_PARAMETER;
  if (text.size() >= size) return QRN_ERROR_INSUFFICIENT_BUFFER;
  std::memcpy(buffer, text.c_str(), text.size() + 1);
  return QRN_ERROR_SUCCESS;
}

QVN_TRANSPORT_EXPORT std::uint32_t TransportInitialize() {
  std::unique_ptr<Transport> made = makeTransport();
  const std::uint32_t rc = made->start();
  if (rc == QRN_ERROR_SUCCESS) transport = made.release();
  return rc;
}

QVN_TRANSPORT_EXPORT std::uint32_t TransportUninitialize() {
  delete std::exchange(transport, nullptr);
  return QRN_ERROR_SUCCESS;
}

QVN_TRANSPORT_EXPORT std::uint32_t TransportInstall() { return QRN_ERROR_SUCCESS; }
QVN_TRANSPORT_EXPORT std::uint32_t TransportUninstall() { return QRN_ERROR_SUCCESS; }

QVN_TRANSPORT_EXPORT ConnectionManager* TransportGetConnectionManager() {
  return &transport->connectionManager();
}
QVN_TRANSPORT_EXPORT VisitorManager* TransportGetVisitorManager() { return &transport->visitorManager(); }
QVN_TRANSPORT_EXPORT Discoverer* TransportGetDiscoverer() { return &transport->discoverer(); }

QVN_TRANSPORT_EXPORT std::uint32_t TransportGetAbiVersion() { return QVN_TRANSPORT_ABI_VERSION; }
