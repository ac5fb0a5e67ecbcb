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

// Of the device that this thread writes to or whose visitor it runs.
thread_local std::uint32_t visitedHandle = 0;

std::string hex(const Data& data) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (std::uint32_t i = 0; i < data.getLength(); ++i) {
    text += kDigits[data.getBuffer()[i] >> 4];
    text += kDigits[data.getBuffer()[i] & 0x0F];
  }
  return text;
}

constexpr std::uint32_t kCommandLength = 8;

// What is part of the trail only begins with a blank.
bool isTrailOnly(const std::string& call) { return call.starts_with(' '); }

}  // namespace

struct FakeTransport::Connection : Connectable {
  Connection(std::uint32_t deviceHandle, std::string connectionName)
      : handle(deviceHandle), name(std::move(connectionName)) {}

  bool setChild(std::uint32_t index, Connectable* child) override {
    FakeTransport& transport = instance();
    if (child != nullptr && transport.reached("setChild") != QRN_ERROR_SUCCESS) return false;
    auto* const device = static_cast<Device*>(child);
    transport.record(" child " + name + " " + std::to_string(index) + " " +
                     (device != nullptr ? std::to_string(device->getHandle()) : "none"));
    transport.setDevice(handle, device);
    const bool set = Connectable::setChild(index, child);
    return child != nullptr ? set : transport.reached("setChild") == QRN_ERROR_SUCCESS;
  }
  void setTag(std::uint32_t tag) override {
    instance().record(" tag " + name + " " + std::to_string(tag));
    Connectable::setTag(tag);
  }
  std::uint32_t doOpen() override {
    FakeTransport& transport = instance();
    transport.record("open " + name);
    std::uint32_t rc = transport.reached("open");
    if (rc == QRN_ERROR_SUCCESS && transport.onOpen) rc = transport.onOpen(name);
    if (rc == QRN_ERROR_SUCCESS) ++opened;
    return rc;
  }
  std::uint32_t doClose() override {
    instance().record("close " + name);
    --opened;
    return instance().reached("close");
  }
  void write(Data& data) override {
    FakeTransport& transport = instance();
    visitedHandle = handle;
    const std::uint32_t length = data.getLength();
    const std::string bytes(bytesAsText(data));
    if (const std::uint32_t rc = transport.reached("write"); rc != QRN_ERROR_SUCCESS) {
      data.setRc(rc);
      data.setCount(0);
    } else if (transport.onWrite) {
      transport.onWrite(data);
    } else {
      data.setRc(QRN_ERROR_SUCCESS);
      data.setCount(length);
    }
    data.consume(data.getCount(), false);
    // Commands are short, and their bytes matter.
    transport.record("write " + std::to_string(data.getCount()) +
                     (length <= kCommandLength && data.getCount() == length ? " " + hex(Data(bytes)) : ""));
    std::lock_guard<std::mutex> lock(transport.mutex_);
    transport.written_ += bytes.substr(0, data.getCount());
  }

  // What is not as it was when the connection was made.
  std::string held() {
    std::string text;
    if (opened != 0) text += " opened " + std::to_string(opened);
    if (out > 0) text += " got " + std::to_string(out);
    if (getTag() != 0) text += " tag " + std::to_string(getTag());
    if (getChild(0) != nullptr) text += " child";
    return text.empty() ? text : name + " of " + std::to_string(handle) + text + "; ";
  }

  const std::uint32_t handle;
  // Gets without a release. A holder releases once more than it got.
  std::atomic<int> out{0};
  std::atomic<int> opened{0};
  std::string name;
};

struct FakeTransport::Visit : Visitor {
  explicit Visit(std::string visitorName) : name(std::move(visitorName)) {}

  void setData(Data& data) override {
    instance().reached("setData");
    Visitor::setData(data);
  }
  void setDevice(Device& device) override {
    instance().reached("setDevice");
    Visitor::setDevice(device);
  }

  void visit(Connectable& connection) override {
    FakeTransport& transport = instance();
    const std::string on = static_cast<Connection&>(connection).name;
    visitedHandle = static_cast<Connection&>(connection).handle;
    result_ = transport.reached("visit");
    if (result_ != QRN_ERROR_SUCCESS) {
      if (data_ != nullptr) data_->setRc(result_);
      return;
    }
    if (device_ != nullptr) transport.setDevice(visitedHandle, device_);
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

  std::uint32_t getResult() const override {
    const std::uint32_t rc = instance().reached("getResult");
    return rc != QRN_ERROR_SUCCESS ? rc : result_;
  }

  void cancel() override {
    instance().record("cancel");
    {
      const std::lock_guard<std::mutex> lock(mutex);
      cancelled = true;
      changed.notify_all();
    }
    instance().reached("cancel");
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
  Connectable* getConnection(const std::string& deviceAttributes, const std::string& name) override {
    instance().record("get " + name);
    if (instance().reached("getConnection") != QRN_ERROR_SUCCESS) return nullptr;
    std::uint32_t handle = 0;
    AttributeCodec::getLong(deviceAttributes, attribute::kHandle, handle);
    std::lock_guard<std::mutex> lock(mutex_);
    auto& connection = connections_[{handle, name}];
    if (!connection) connection = std::make_unique<Connection>(handle, name);
    ++connection->out;
    return connection.get();
  }
  void releaseConnection(Connectable* connection) override {
    auto* const released = static_cast<Connection*>(connection);
    instance().record("release " + released->name);
    --released->out;
    instance().reached("releaseConnection");
  }

  std::string held() {
    std::lock_guard<std::mutex> lock(mutex_);
    std::string text;
    for (const auto& [key, connection] : connections_) text += connection->held();
    return text;
  }

 private:
  std::mutex mutex_;
  std::map<std::pair<std::uint32_t, std::string>, std::unique_ptr<Connection>> connections_;
};

class FakeTransport::Visitors : public VisitorManager {
 public:
  Visitor* getVisitor(const std::string& name) override {
    if (instance().reached("getVisitor") != QRN_ERROR_SUCCESS) return nullptr;
    ++instance().visitorsOut_;
    return new Visit(name);
  }
  void releaseVisitor(Visitor* visitor) override {
    instance().record(" release visitor " + static_cast<Visit*>(visitor)->name);
    delete visitor;
    --instance().visitorsOut_;
    instance().reached("releaseVisitor");
  }
};

class FakeTransport::Discovery : public Discoverer {
 public:
  std::uint32_t discover(const std::string& options) override {
    FakeTransport& transport = instance();
    transport.record("discover");
    const std::uint32_t rc = transport.reached("discover");
    if (rc == QRN_ERROR_SUCCESS && transport.onDiscover) {
      for (const std::string& text : transport.onDiscover(options)) notify(text);
    }
    return rc;
  }
  std::uint32_t discoverSpecific(const std::string& text) override {
    instance().record("discoverSpecific");
    const std::uint32_t rc = instance().reached("discoverSpecific");
    if (rc == QRN_ERROR_SUCCESS) notify(text);
    return rc;
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
  onCall = nullptr;
  onRecord = nullptr;
  awaitsReplies = false;
  const std::lock_guard guard(mutex_);
  calls_.clear();
  written_.clear();
  devices_.clear();
  visitorsOut_ = 0;
  connections_ = std::make_unique<Connections>();  // Some are open yet.
}

const char* FakeTransport::module() { return QVN_FAKE_TRANSPORT_MODULE; }

void FakeTransport::registerModule() {
  using namespace platform::registry;
  Key key;
  createKey(Hive::LocalMachine, std::string(kLibraryRegistryRoot) + "Transports\\Local", {}, key);
  createKey(Hive::LocalMachine, std::string(kLibraryRegistryRoot) + "Transports\\Network", {}, key);
  setValue(key, kName, ValueType::String, module());
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
  if (onRecord) onRecord(call);
  std::lock_guard<std::mutex> lock(mutex_);
  calls_.push_back(call);
}

std::vector<std::string> FakeTransport::calls() const {
  std::lock_guard<std::mutex> lock(mutex_);
  std::vector<std::string> calls = calls_;
  std::erase_if(calls, isTrailOnly);
  return calls;
}

std::vector<std::string> FakeTransport::takeCalls() {
  std::vector<std::string> calls = takeTrail();
  std::erase_if(calls, isTrailOnly);
  return calls;
}

std::vector<std::string> FakeTransport::takeTrail() {
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

std::string FakeTransport::held() const {
  const int visitors = visitorsOut_;
  return connections_->held() + (visitors == 0 ? "" : std::to_string(visitors) + " visitors");
}

DeviceReference FakeTransport::device(std::uint32_t handle) const {
  std::lock_guard<std::mutex> lock(mutex_);
  const auto found = devices_.find(handle);
  return found == devices_.end() ? DeviceReference() : found->second;
}

void FakeTransport::setDevice(std::uint32_t handle, Device* device) {
  const DeviceReference reference = device != nullptr ? DeviceReference(*device) : DeviceReference();
  std::lock_guard<std::mutex> lock(mutex_);
  devices_[handle] = devices_[0] = reference;
}

std::uint32_t FakeTransport::deliver(Data data, std::uint32_t handle) {
  device(handle).accept(data);
  return data.getRc();
}

void FakeTransport::deliver(Notification notification, std::uint32_t handle) {
  device(handle).accept(notification);
}
void FakeTransport::loseConnection(std::uint32_t handle) { device(handle).onConnectionLost(); }
std::uint32_t FakeTransport::visited() { return visitedHandle; }

std::uint32_t FakeTransport::run(const char* entryPoint) {
  record(entryPoint);
  return reached(entryPoint);
}
ConnectionManager* FakeTransport::connectionManager() {
  return reached("connection manager") == QRN_ERROR_SUCCESS ? connections_.get() : nullptr;
}
VisitorManager* FakeTransport::visitorManager() {
  return reached("visitor manager") == QRN_ERROR_SUCCESS ? visitors_.get() : nullptr;
}
Discoverer* FakeTransport::discoverer() {
  return reached("discoverer") == QRN_ERROR_SUCCESS ? discovery_.get() : nullptr;
}

}  // namespace qvn::test

using qvn::test::FakeTransport;

QVN_TRANSPORT_EXPORT std::uint32_t TransportGetAbiVersion() { return QVN_TRANSPORT_ABI_VERSION; }
QVN_TRANSPORT_EXPORT std::uint32_t TransportGetInfo(char* buffer, std::uint32_t size, std::uint32_t*) {
  const std::string info = "<Transport>FAKE</Transport><TransportType>NETWORK_TRANSPORT</TransportType>";
  if (info.size() >= size) return QRN_ERROR_INSUFFICIENT_BUFFER;
  *std::copy(info.begin(), info.end(), buffer) = '\0';
  return QRN_ERROR_SUCCESS;
}
QVN_TRANSPORT_EXPORT std::uint32_t TransportInitialize() {
  return FakeTransport::instance().run("initialize");
}
QVN_TRANSPORT_EXPORT std::uint32_t TransportUninitialize() {
  return FakeTransport::instance().run("uninitialize");
}
QVN_TRANSPORT_EXPORT std::uint32_t TransportInstall() { return FakeTransport::instance().run("install"); }
QVN_TRANSPORT_EXPORT std::uint32_t TransportUninstall() { return FakeTransport::instance().run("uninstall"); }
QVN_TRANSPORT_EXPORT qvn::ConnectionManager* TransportGetConnectionManager() {
  return FakeTransport::instance().connectionManager();
}
QVN_TRANSPORT_EXPORT qvn::VisitorManager* TransportGetVisitorManager() {
  return FakeTransport::instance().visitorManager();
}
QVN_TRANSPORT_EXPORT qvn::Discoverer* TransportGetDiscoverer() {
  return FakeTransport::instance().discoverer();
}
