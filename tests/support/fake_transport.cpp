#include "support/fake_transport.h"

#include <algorithm>
#include <thread>
#include <utility>

#include "platform/registry/registry.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "qvn/transport/device.h"
#include "qvn/transport/settings.h"

namespace qvn::test {
namespace {

std::string hex(const Data& data) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (std::uint32_t i = 0; i < data.getLength(); ++i) {
    text += kDigits[data.getBuffer()[i] >> 4];
    text += kDigits[data.getBuffer()[i] & 0x0F];
  }
  return text;
}

}  // namespace

struct FakeTransport::Connection : Connectable {
  explicit Connection(std::string connectionName) : name(std::move(connectionName)) {}

  bool setChild(std::uint32_t index, Connectable* child) override {
    FakeTransport& transport = instance();
    auto* const device = static_cast<Device*>(child);
    {
      std::lock_guard<std::mutex> lock(transport.mutex_);
      transport.device_ = device != nullptr ? DeviceReference(*device) : DeviceReference();
    }
    return Connectable::setChild(index, child);
  }
  std::uint32_t doOpen() override {
    FakeTransport& transport = instance();
    transport.record("open " + name);
    return transport.onOpen ? transport.onOpen(name) : QRN_ERROR_SUCCESS;
  }
  std::uint32_t doClose() override {
    instance().record("close " + name);
    return QRN_ERROR_SUCCESS;
  }
  void write(Data& data) override {
    FakeTransport& transport = instance();
    const std::uint32_t length = data.getLength();
    const std::string bytes(bytesAsText(data));
    if (transport.onWrite) {
      transport.onWrite(data);
    } else {
      data.setRc(QRN_ERROR_SUCCESS);
      data.setCount(length);
    }
    data.consume(data.getCount(), false);
    transport.record("write " + std::to_string(data.getCount()));
    std::lock_guard<std::mutex> lock(transport.mutex_);
    transport.written_ += bytes.substr(0, data.getCount());
  }

  std::string name;
};

struct FakeTransport::Visit : Visitor {
  explicit Visit(std::string visitorName) : name(std::move(visitorName)) {}

  void visit(Connectable& connection) override {
    FakeTransport& transport = instance();
    const std::string on = static_cast<Connection&>(connection).name;
    {
      std::lock_guard<std::mutex> lock(transport.mutex_);
      if (device_ != nullptr) transport.device_ = DeviceReference(*device_);
    }
    if (name == visitor_name::kNpaData) {
      transport.record("npa " + on + " " + hex(*data_).substr(8));
      exchange(transport);
    } else if (name == visitor_name::kEscCommand) {
      transport.record("esc " + on + " " + hex(*data_));
      exchange(transport);
    } else if (name == visitor_name::kObjectStoreData) {
      transport.record("store " + on);
      exchange(transport);
      if (transport.awaitsReplies && data_->getRc() == QRN_ERROR_TIMEOUT) waitForCancel();
    } else {
      transport.record("visit " + name + " " + on);
    }
    if (transport.onVisitor) result_ = transport.onVisitor(name, data_);
  }

  void cancel() override {
    instance().record("cancel");
    const std::lock_guard<std::mutex> lock(mutex);
    cancelled = true;
    changed.notify_all();
  }

  void waitForCancel() {
    std::unique_lock<std::mutex> lock(mutex);
    changed.wait(lock, [this] { return cancelled; });
    result_ = 1236;
  }

  void exchange(FakeTransport& transport) {
    std::optional<Data> reply;
    if (transport.onExchange) reply = transport.onExchange(*data_);
    data_->setRc(reply ? QRN_ERROR_SUCCESS : QRN_ERROR_TIMEOUT);
    if (!reply) return;
    // As a real transport does: on a thread of its own, over before the visitor returns.
    std::thread delivering([&] { device_->doAccept(*reply); });
    delivering.join();
  }

  std::string name;
  std::mutex mutex;
  std::condition_variable changed;
  bool cancelled = false;
};

class FakeTransport::Connections : public ConnectionManager {
 public:
  Connectable* getConnection(const std::string& /*deviceAttributes*/, const std::string& name) override {
    instance().record("get " + name);
    std::lock_guard<std::mutex> lock(mutex_);
    auto& connection = connections_[name];
    if (!connection) connection = std::make_unique<Connection>(name);
    return connection.get();
  }
  void releaseConnection(Connectable* connection) override {
    instance().record("release " + static_cast<Connection*>(connection)->name);
  }

 private:
  std::mutex mutex_;
  std::map<std::string, std::unique_ptr<Connection>> connections_;
};

class FakeTransport::Visitors : public VisitorManager {
 public:
  Visitor* getVisitor(const std::string& name) override { return new Visit(name); }
  void releaseVisitor(Visitor* visitor) override { delete visitor; }
};

class FakeTransport::Discovery : public Discoverer {
 public:
  std::uint32_t discover(const std::string& options) override {
    FakeTransport& transport = instance();
    transport.record("discover");
    if (transport.onDiscover) {
      for (const std::string& text : transport.onDiscover(options)) notify(text);
    }
    return QRN_ERROR_SUCCESS;
  }
  std::uint32_t discoverSpecific(const std::string& text) override {
    instance().record("discoverSpecific");
    notify(text);
    return QRN_ERROR_SUCCESS;
  }
};

FakeTransport::FakeTransport()
    : connections_(std::make_unique<Connections>()),
      visitors_(std::make_unique<Visitors>()),
      discovery_(std::make_unique<Discovery>()) {}

FakeTransport& FakeTransport::instance() {
  static FakeTransport transport;
  return transport;
}

void FakeTransport::reset() {
  onOpen = nullptr;
  onWrite = nullptr;
  onExchange = nullptr;
  onVisitor = nullptr;
  onDiscover = nullptr;
  awaitsReplies = false;
  const std::lock_guard guard(mutex_);
  calls_.clear();
  written_.clear();
  device_ = DeviceReference();
  connections_ = std::make_unique<Connections>();  // Some are open yet.
}

void FakeTransport::registerModule() {
  using namespace platform::registry;
  Key key;
  createKey(Hive::LocalMachine, std::string(kLibraryRegistryRoot) + "Transports\\Local", {}, key);
  createKey(Hive::LocalMachine, std::string(kLibraryRegistryRoot) + "Transports\\Network", {}, key);
  setValue(key, kName, ValueType::String, QVN_FAKE_TRANSPORT_MODULE);
}

std::string FakeTransport::deviceText(const std::string& family, std::uint32_t handle,
                                      const std::string& portName) {
  std::string text;
  AttributeCodec::setString(text, attribute::kDevice, family);
  AttributeCodec::setLong(text, attribute::kHandle, handle);
  AttributeCodec::setString(text, attribute::kPortname, portName);
  AttributeCodec::setString(text, attribute::kTransport, kName);
  return text;
}

std::string FakeTransport::printerText(std::uint32_t handle, const std::string& portName) {
  return deviceText("CpdPrinter", handle, portName);
}

void FakeTransport::record(const std::string& call) {
  std::lock_guard<std::mutex> lock(mutex_);
  calls_.push_back(call);
}

std::vector<std::string> FakeTransport::calls() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return calls_;
}

std::vector<std::string> FakeTransport::takeCalls() {
  std::lock_guard<std::mutex> lock(mutex_);
  return std::exchange(calls_, {});
}

std::vector<std::string> FakeTransport::calls(const std::string& prefix) const {
  std::vector<std::string> matching = calls();
  std::erase_if(matching, [&](const std::string& call) { return !call.starts_with(prefix); });
  return matching;
}

std::string FakeTransport::written() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return written_;
}

DeviceReference FakeTransport::device() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return device_;
}

std::uint32_t FakeTransport::deliver(Data data) {
  device().accept(data);
  return data.getRc();
}

void FakeTransport::deliver(Notification notification) { device().accept(notification); }
void FakeTransport::loseConnection() { device().onConnectionLost(); }

ConnectionManager* FakeTransport::connectionManager() { return connections_.get(); }
VisitorManager* FakeTransport::visitorManager() { return visitors_.get(); }
Discoverer* FakeTransport::discoverer() { return discovery_.get(); }

}  // namespace qvn::test

namespace {

using qvn::test::FakeTransport;

std::uint32_t recorded(const char* call) {
  FakeTransport::instance().record(call);
  return QRN_ERROR_SUCCESS;
}

}  // namespace

QVN_TRANSPORT_EXPORT std::uint32_t TransportGetAbiVersion() { return QVN_TRANSPORT_ABI_VERSION; }
QVN_TRANSPORT_EXPORT std::uint32_t TransportGetInfo(char* buffer, std::uint32_t size, std::uint32_t*) {
  const std::string info = "<Transport>FAKE</Transport><TransportType>NETWORK_TRANSPORT</TransportType>";
  if (info.size() >= size) return QRN_ERROR_INSUFFICIENT_BUFFER;
  *std::copy(info.begin(), info.end(), buffer) = '\0';
  return QRN_ERROR_SUCCESS;
}
QVN_TRANSPORT_EXPORT std::uint32_t TransportInitialize() { return recorded("initialize"); }
QVN_TRANSPORT_EXPORT std::uint32_t TransportUninitialize() { return recorded("uninitialize"); }
QVN_TRANSPORT_EXPORT std::uint32_t TransportInstall() { return recorded("install"); }
QVN_TRANSPORT_EXPORT std::uint32_t TransportUninstall() { return recorded("uninstall"); }
QVN_TRANSPORT_EXPORT qvn::ConnectionManager* TransportGetConnectionManager() {
  return FakeTransport::instance().connectionManager();
}
QVN_TRANSPORT_EXPORT qvn::VisitorManager* TransportGetVisitorManager() {
  return FakeTransport::instance().visitorManager();
}
QVN_TRANSPORT_EXPORT qvn::Discoverer* TransportGetDiscoverer() {
  return FakeTransport::instance().discoverer();
}
