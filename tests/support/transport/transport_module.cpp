#include "support/transport/transport_module.h"

#include <ostream>
#include <stdexcept>

#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "qvn/transport/plugin.h"
#include "qvn/transport/settings.h"
#include "support/registry_values.h"

namespace qvn::test {
namespace {

std::unique_ptr<platform::Module> loadModule(const char* path) {
  platform::ErrorCode error = 0;
  std::string detail;
  auto module = platform::Module::load(path, error, &detail);
  if (module == nullptr) throw std::runtime_error(std::string("cannot load ") + path + ": " + detail);
  return module;
}

template <typename Function>
Function* find(const platform::Module& module, const char* name) {
  platform::ErrorCode error = 0;
  void* address = module.find(name, error);
  if (address == nullptr) throw std::runtime_error(std::string("no ") + name);
  return reinterpret_cast<Function*>(address);
}

std::unique_ptr<platform::Module> initialized(std::unique_ptr<platform::Module> module) {
  find<transport_entry::Initialize>(*module, transport_entry::kInitialize)();
  return module;
}

}  // namespace

void installSettings() { setSetting("9200UnicastDiscoveryTimeout", 300); }

void setSetting(const char* name, std::uint32_t value) {
  store(std::string(kLibraryRegistryRoot) + "Ip1\\Settings\\", name, value);
}

TransportModule::TransportModule() : TransportModule(QVN_TRANSPORT_MODULE) {}
TransportModule::TransportModule(const char* path) : TransportModule(initialized(loadModule(path))) {}

TransportModule::TransportModule(std::unique_ptr<platform::Module> module)
    : connections(
          *find<transport_entry::GetConnectionManager>(*module, transport_entry::kGetConnectionManager)()),
      visitors(*find<transport_entry::GetVisitorManager>(*module, transport_entry::kGetVisitorManager)()),
      discoverer(*find<transport_entry::GetDiscoverer>(*module, transport_entry::kGetDiscoverer)()),
      module_(std::move(module)) {}

TransportModule::~TransportModule() {
  find<transport_entry::Uninitialize>(*module_, transport_entry::kUninitialize)();
}

void* TransportModule::entryPoint(const char* name) const {
  platform::ErrorCode error = 0;
  return module_->find(name, error);
}

std::string attributeText(std::uint16_t printPort, std::uint16_t bidiPort, const std::string& address,
                          std::uint32_t handle) {
  std::string text;
  AttributeCodec::setString(text, attribute::kDevice, "CpdPrinter");
  AttributeCodec::setLong(text, attribute::kHandle, handle);
  AttributeCodec::setString(text, attribute::kAddress, address);
  AttributeCodec::setLong(text, attribute::kIpPort, printPort);
  AttributeCodec::setLong(text, attribute::kChannelId, bidiPort);
  return text;
}

std::string partText(const char* family, std::uint16_t channel) {
  std::string text;
  AttributeCodec::setString(text, attribute::kDevice, family);
  AttributeCodec::setLong(text, attribute::kHandle, 7);
  AttributeCodec::setString(text, attribute::kAddress, "127.0.0.1");
  AttributeCodec::setLong(text, attribute::kChannelId, channel);
  return text;
}

OpenConnection::OpenConnection(TransportModule& module, const std::string& attributes, const char* name,
                               Device* child)
    : module_(module), connection_(module.connections.getConnection(attributes, name)) {
  if (child != nullptr) connection_->setChild(0, child);
  openCode_ = connection_->open();
}

OpenConnection::~OpenConnection() {
  connection_->close();
  connection_->setChild(0, nullptr);
  module_.connections.releaseConnection(connection_);
}

void PrintTo(const ExchangeResult& result, std::ostream* out) {
  *out << "result " << result.result << ", reply code " << result.replyCode;
}

std::uint32_t visit(TransportModule& module, Connectable& connection, const std::string& visitorName,
                    Data* data, Device* device) {
  Visitor* const visitor = module.visitors.getVisitor(visitorName);
  if (data != nullptr) visitor->setData(*data);
  if (device != nullptr) visitor->setDevice(*device);
  connection.accept(*visitor);
  const std::uint32_t result = visitor->getResult();
  module.visitors.releaseVisitor(visitor);
  return result;
}

ExchangeResult exchange(TransportModule& module, Connectable& connection, Device& device,
                        std::string_view request, const char* visitorName) {
  const Bytes bytes = hex(request);
  Data data(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
  const std::uint32_t result = visit(module, connection, visitorName, &data, &device);
  return {result, data.getRc()};
}

}  // namespace qvn::test
