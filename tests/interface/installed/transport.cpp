// The smallest transport plug-in: it has a name and reaches nothing.
#include <qvn/transport/attribute_codec.h>
#include <qvn/transport/attributes.h>
#include <qvn/transport/plugin.h>

#include <cstring>
#include <string>

// What compilers make symbols of that a process has only once, so that the module could never be unloaded.
template <typename T>
T& onlyOne() {
  static T value{};
  return value;
}
inline std::uint32_t initialized = 0;

namespace {

class NoConnections final : public qvn::ConnectionManager {
 public:
  qvn::Connectable* getConnection(const std::string&, const std::string&) override { return &none_; }
  void releaseConnection(qvn::Connectable*) override {}

 private:
  qvn::Connectable none_;
};

class NoOperation final : public qvn::Visitor {
 public:
  void visit(qvn::Connectable&) override { result_ = QRN_ERROR_INVALID_FUNCTION; }
};

class NoVisitors final : public qvn::VisitorManager {
 public:
  qvn::Visitor* getVisitor(const std::string&) override { return &none_; }
  void releaseVisitor(qvn::Visitor*) override {}

 private:
  NoOperation none_;
};

class NoDevices final : public qvn::Discoverer {
 public:
  std::uint32_t discover(const std::string&) override { return QRN_ERROR_SUCCESS; }
};

NoConnections connections;
NoVisitors visitors;
NoDevices discoverer;

}  // namespace

QVN_TRANSPORT_EXPORT std::uint32_t TransportGetInfo(char* buffer, std::uint32_t size, std::uint32_t*) {
  std::string info;
  qvn::AttributeCodec::setString(info, qvn::attribute::kTransport, "HBN1");
  qvn::AttributeCodec::setString(info, qvn::attribute::kTransportType, "NETWORK_TRANSPORT");
  std::strncpy(buffer, info.c_str(), size - 1);
  return 0;
}
QVN_TRANSPORT_EXPORT std::uint32_t TransportInitialize() {
  ++initialized;
  onlyOne<std::string>() = "initialized";
  return 0;
}
QVN_TRANSPORT_EXPORT std::uint32_t TransportUninitialize() { return 0; }
QVN_TRANSPORT_EXPORT std::uint32_t TransportInstall() { return 0; }
QVN_TRANSPORT_EXPORT std::uint32_t TransportUninstall() { return 0; }
QVN_TRANSPORT_EXPORT qvn::ConnectionManager* TransportGetConnectionManager() { return &connections; }
QVN_TRANSPORT_EXPORT qvn::VisitorManager* TransportGetVisitorManager() { return &visitors; }
QVN_TRANSPORT_EXPORT qvn::Discoverer* TransportGetDiscoverer() { return &discoverer; }
