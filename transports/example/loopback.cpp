// A complete transport in one file: its one printer is a file on this machine.
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "qvn/transport/data.h"
#include "qvn/transport/device.h"
#include "qvn/transport/plugin.h"

using namespace qvn;

namespace {

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

// The "print" connection. Every other connection is a plain Connectable, which opens and does nothing.
class PrintConnection : public Connectable {
 public:
  explicit PrintConnection(std::string path) : path_(std::move(path)) {}

  std::uint32_t doOpen() override {
    file_.reset(std::fopen(path_.c_str(), "ab"));
    if (file_ == nullptr) return QRN_ERROR_INVALID_PARAMETER;
    std::setvbuf(file_.get(), nullptr, _IONBF, 0);  // what was counted as written is with the system
    return QRN_ERROR_SUCCESS;
  }
  std::uint32_t doClose() override {
    file_.reset();
    return QRN_ERROR_SUCCESS;
  }

  // Consume and count what was taken, also when the rest was not.
  void write(Data& data) override {
    const auto bytes = bytesOf(data);  // read through a const Data, large data is not copied
    const std::size_t written = file_ ? std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) : 0;
    data.consume(static_cast<std::uint32_t>(written), false);
    data.setCount(static_cast<std::uint32_t>(written));
    data.setRc(written == bytes.size() ? QRN_ERROR_SUCCESS : QRN_ERROR_DISK_FULL);
  }

 private:
  const std::string path_;
  std::unique_ptr<std::FILE, FileCloser> file_;
};

// One object per device and name, kept until the module goes: longer than anybody holds it.
class Connections : public ConnectionManager {
 public:
  Connectable* getConnection(const std::string& deviceAttributes, const std::string& name) override {
    std::string path;
    AttributeCodec::getString(deviceAttributes, attribute::kAddress, path);
    const std::lock_guard<std::mutex> lock(mutex_);
    std::unique_ptr<Connectable>& connection = connections_[path + '\n' + name];
    if (connection == nullptr && name == connection_name::kPrint) {
      connection = std::make_unique<PrintConnection>(path);
    } else if (connection == nullptr) {
      connection = std::make_unique<Connectable>();
    }
    return connection.get();
  }
  void releaseConnection(Connectable*) override {}

 private:
  std::mutex mutex_;
  std::map<std::string, std::unique_ptr<Connectable>> connections_;
};

// Answers the three packets that frame a print job; to all others there is no reply.
class NpaVisitor : public Visitor {
 public:
  void visit(Connectable&) override {
    if (data_ == nullptr || device_ == nullptr) {
      result_ = QRN_ERROR_INVALID_PARAMETER;
      return;
    }
    data_->setRc(QRN_ERROR_TIMEOUT);
    const auto packet = bytesOf(*data_);
    if (packet.size() < 6 || packet[4] != 0x05 || packet[5] > 0x02) return;
    std::vector<std::uint8_t> reply = {0xA5, 0, 6, 0x20, 0x05, packet[5], 0, 0, 1};  // job 1
    if (reply[5] == 0x02) reply.resize(26);  // as long as "the job has been printed" is
    reply[2] = static_cast<std::uint8_t>(reply.size() - 3);
    Data delivered(reply.data(), static_cast<std::uint32_t>(reply.size()));
    device_->notify(delivered);
    data_->setRc(QRN_ERROR_SUCCESS);
  }
};

// An operation with nothing to do (0), or one that this transport does not know (1).
class PlainVisitor : public Visitor {
 public:
  explicit PlainVisitor(std::uint32_t result) { result_ = result; }
  void visit(Connectable&) override {}
};

class Visitors : public VisitorManager {
 public:
  Visitor* getVisitor(const std::string& name) override {
    if (name == visitor_name::kNpaData) return new NpaVisitor;
    const bool known = name == visitor_name::kStartJobPrinter || name == visitor_name::kFlushPrintBuffer;
    return new PlainVisitor(known ? QRN_ERROR_SUCCESS : QRN_ERROR_INVALID_FUNCTION);
  }
  void releaseVisitor(Visitor* visitor) override { delete visitor; }
};

// The options name the file; without them there is nothing to find.
class Finder : public Discoverer {
 public:
  std::uint32_t discover(const std::string& options) override {
    if (options.empty()) return QRN_ERROR_SUCCESS;
    std::string text;
    AttributeCodec::setString(text, attribute::kDevice, "CpdPrinter");
    AttributeCodec::setLong(text, attribute::kHandle, 50001);
    AttributeCodec::setString(text, attribute::kPortname, "LOOP1");
    AttributeCodec::setString(text, attribute::kAddress, options);
    AttributeCodec::setString(text, attribute::kTransport, "Loopback");
    AttributeCodec::setString(text, attribute::kTransportType, "LOCAL_TRANSPORT");
    notify(text);
    return QRN_ERROR_SUCCESS;
  }
};

Connections connections;
Visitors visitors;
Finder finder;

}  // namespace

QVN_TRANSPORT_EXPORT std::uint32_t TransportGetInfo(char* buffer, std::uint32_t size, std::uint32_t*) {
  constexpr char kInfo[] = "<Transport>Loopback</Transport><TransportType>LOCAL_TRANSPORT</TransportType>";
  if (size < sizeof kInfo) return QRN_ERROR_INSUFFICIENT_BUFFER;
  std::memcpy(buffer, kInfo, sizeof kInfo);
  return QRN_ERROR_SUCCESS;
}
QVN_TRANSPORT_EXPORT std::uint32_t TransportInitialize() { return QRN_ERROR_SUCCESS; }
QVN_TRANSPORT_EXPORT std::uint32_t TransportUninitialize() { return QRN_ERROR_SUCCESS; }
QVN_TRANSPORT_EXPORT std::uint32_t TransportInstall() { return QRN_ERROR_SUCCESS; }
QVN_TRANSPORT_EXPORT std::uint32_t TransportUninstall() { return QRN_ERROR_SUCCESS; }
QVN_TRANSPORT_EXPORT ConnectionManager* TransportGetConnectionManager() { return &connections; }
QVN_TRANSPORT_EXPORT VisitorManager* TransportGetVisitorManager() { return &visitors; }
QVN_TRANSPORT_EXPORT Discoverer* TransportGetDiscoverer() { return &finder; }
QVN_TRANSPORT_EXPORT std::uint32_t TransportGetAbiVersion() { return QVN_TRANSPORT_ABI_VERSION; }
