#include "shared/visitors/device_visitors.h"

#include <algorithm>
#include <array>
#include <memory>
#include <stop_token>

#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"
#include "qvn/transport/connectable.h"
#include "qvn/transport/connection_manager.h"
#include "qvn/transport/data.h"
#include "qvn/transport/device.h"
#include "shared/connections/esc_connection.h"
#include "shared/connections/hid_connection.h"
#include "shared/connections/npa_connection.h"
#include "shared/connections/print_connection.h"
#include "shared/connections/store_connection.h"

namespace qvn::shared {
namespace {

// An operation that needs nothing done: only its answer counts.
class AnsweringVisitor : public Visitor {
 public:
  explicit AnsweringVisitor(std::uint32_t result) { result_ = result; }
  void visit(Connectable&) override {}
};

// Sends a packet on the device's bidi connection, also when it is run on the print connection.
class PacketVisitor : public Visitor {
 public:
  explicit PacketVisitor(DeviceConnections& connections) : connections_(connections) {}

  void visit(Connectable& connection) final {
    if (data_ == nullptr || device_ == nullptr) {
      result_ = QRN_ERROR_INVALID_PARAMETER;
    } else if (auto* const npa = dynamic_cast<NpaConnection*>(&connection)) {
      result_ = doSend(*npa);
    } else if (dynamic_cast<PrintConnection*>(&connection) != nullptr) {
      Connectable* const bidi = connections_.getConnection(device_->getAttributes(), connection_name::kBidi);
      auto* const ofDevice = dynamic_cast<NpaConnection*>(bidi);
      result_ = ofDevice != nullptr ? doSend(*ofDevice) : std::uint32_t{QRN_ERROR_INVALID_FUNCTION};
      connections_.releaseConnection(bidi);
    } else {
      result_ = QRN_ERROR_INVALID_FUNCTION;
    }
  }

 protected:
  virtual std::uint32_t doSend(NpaConnection& npa) = 0;

 private:
  DeviceConnections& connections_;
};

class NpaDataVisitor : public PacketVisitor {
 public:
  using PacketVisitor::PacketVisitor;
  std::uint32_t doSend(NpaConnection& npa) override { return npa.exchange(*data_, *device_); }
};

class NamePrintJobVisitor : public PacketVisitor {
 public:
  using PacketVisitor::PacketVisitor;
  std::uint32_t doSend(NpaConnection& npa) override {
    const std::uint32_t rc = npa.exchange(*data_, *device_);
    return rc != QRN_ERROR_SUCCESS ? rc : data_->getRc();
  }
};

class StartNpaModeVisitor : public PacketVisitor {
 public:
  using PacketVisitor::PacketVisitor;
  std::uint32_t doSend(NpaConnection& npa) override { return npa.send(*data_, *device_); }
};

class EscCommandVisitor : public Visitor {
 public:
  void visit(Connectable& connection) override {
    auto* const scanner = dynamic_cast<EscConnection*>(&connection);
    if (data_ == nullptr || device_ == nullptr) {
      result_ = QRN_ERROR_INVALID_PARAMETER;
    } else {
      result_ = scanner != nullptr ? scanner->exchange(*data_, *device_) : QRN_ERROR_INVALID_FUNCTION;
    }
  }
};

class ObjectStoreDataVisitor : public Visitor {
 public:
  void visit(Connectable& connection) override {
    auto* const store = dynamic_cast<StoreConnection*>(&connection);
    if (data_ == nullptr || device_ == nullptr) {
      result_ = QRN_ERROR_INVALID_PARAMETER;
    } else {
      result_ = store != nullptr ? store->exchange(*data_, *device_, cancelled_.get_token())
                                 : QRN_ERROR_INVALID_FUNCTION;
    }
  }

  void cancel() override { cancelled_.request_stop(); }

 private:
  std::stop_source cancelled_;
};

class OpenHidVisitor : public Visitor {
 public:
  void visit(Connectable& connection) override {
    auto* const hid = dynamic_cast<HidConnection*>(&connection);
    if (device_ == nullptr) {
      result_ = QRN_ERROR_INVALID_PARAMETER;
    } else {
      result_ = hid != nullptr ? hid->revive(*device_) : QRN_ERROR_INVALID_FUNCTION;
    }
  }
};

// The data is a number.
class NumberVisitor : public Visitor {
 public:
  void visit(Connectable&) override {
    const bool isNumber = data_ != nullptr && data_->getLength() == sizeof(std::uint32_t);
    result_ = isNumber ? QRN_ERROR_SUCCESS : QRN_ERROR_INVALID_PARAMETER;
  }
};

class GetNpaModeVisitor : public NumberVisitor {
 public:
  void visit(Connectable& connection) override {
    NumberVisitor::visit(connection);
    if (result_ != QRN_ERROR_SUCCESS) return;
    const std::uint32_t mode = dynamic_cast<NpaConnection*>(&connection) != nullptr ? 1 : 0;
    data_->fill(reinterpret_cast<const std::uint8_t*>(&mode), sizeof mode);
  }
};

class JobHeaderVisitor : public Visitor {
 public:
  void visit(Connectable&) override {
    std::uint32_t npaSupported = 0;
    const bool readable =
        data_ != nullptr && AttributeCodec::getLong(bytesAsText(*data_), attribute::kNpaSupported,
                                                    npaSupported) == QRN_ERROR_SUCCESS;
    result_ = readable ? QRN_ERROR_SUCCESS : QRN_ERROR_INVALID_PARAMETER;
  }
};

// Nothing of what can be changed is kept in the device, so all there is to do is to refuse what would make it
// unreachable.
class ConfigurationVisitor : public Visitor {
 public:
  explicit ConfigurationVisitor(const DevicePlaces& places) : places_(places) {}

  void visit(Connectable&) override {
    const bool isPlaced = data_ != nullptr && places_.isPlaced(std::string(bytesAsText(*data_)));
    result_ = isPlaced ? QRN_ERROR_SUCCESS : QRN_ERROR_INVALID_PARAMETER;
  }

 private:
  const DevicePlaces& places_;
};

class FlushPrintBufferVisitor : public Visitor {
 public:
  void visit(Connectable& connection) override {
    auto* const print = dynamic_cast<PrintConnection*>(&connection);
    result_ = print != nullptr ? print->flush() : std::uint32_t{QRN_ERROR_SUCCESS};
  }
};

constexpr std::array kChangeable = {attribute::kAddress, attribute::kNickname, attribute::kPortname,
                                    attribute::kPortType, attribute::kTrueEndOfJob};
constexpr std::array kNothingToDo = {visitor_name::kSetMaxPacketSize, visitor_name::kStartJobPrinter};

template <std::size_t N>
bool contains(const std::array<const char*, N>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

Visitor* DeviceVisitors::getVisitor(const std::string& name) {
  if (name == visitor_name::kNpaData) return new NpaDataVisitor(connections_);
  if (name == visitor_name::kNamePrintJob) return new NamePrintJobVisitor(connections_);
  if (name == visitor_name::kStartNpaMode) return new StartNpaModeVisitor(connections_);
  if (name == visitor_name::kEscCommand) return new EscCommandVisitor;
  if (name == visitor_name::kObjectStoreData) return new ObjectStoreDataVisitor;
  if (name == visitor_name::kOpenHid) return new OpenHidVisitor;
  if (name == visitor_name::kGetNpaMode) return new GetNpaModeVisitor;
  if (name == visitor_name::kSetNpaWrapMode || name == visitor_name::kSetNonNpaPrinter) {
    return new NumberVisitor;
  }
  if (name == visitor_name::kJobHeader) return new JobHeaderVisitor;
  if (contains(kChangeable, name)) return new ConfigurationVisitor(places_);
  if (name == visitor_name::kFlushPrintBuffer) return new FlushPrintBufferVisitor;
  return new AnsweringVisitor(contains(kNothingToDo, name) ? QRN_ERROR_SUCCESS : QRN_ERROR_INVALID_FUNCTION);
}

void DeviceVisitors::releaseVisitor(Visitor* visitor) { delete visitor; }

}  // namespace qvn::shared
