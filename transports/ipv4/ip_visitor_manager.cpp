#include "ip_visitor_manager.h"

#include <algorithm>
#include <array>
#include <memory>

#include "npa_connection.h"
#include "print_connection.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"

namespace qvn::ipv4 {
namespace {

// An operation that needs nothing done: only its answer counts.
class AnsweringVisitor : public Visitor {
 public:
  explicit AnsweringVisitor(std::uint32_t result) { result_ = result; }
  void visit(Connectable&) override {}
};

class NpaDataVisitor : public Visitor {
 public:
  explicit NpaDataVisitor(IpConnectionManager& connections) : connections_(connections) {}

  void visit(Connectable& connection) override {
    if (data_ == nullptr || device_ == nullptr) {
      result_ = QRN_ERROR_INVALID_PARAMETER;
    } else if (auto* const npa = dynamic_cast<NpaConnection*>(&connection)) {
      result_ = npa->exchange(*data_, *device_);
    } else if (dynamic_cast<PrintConnection*>(&connection) != nullptr) {
      Connectable* const bidi = connections_.getConnection(device_->getAttributes(), connection_name::kBidi);
      result_ = static_cast<NpaConnection*>(bidi)->exchange(*data_, *device_);
      connections_.releaseConnection(bidi);
    } else {
      result_ = QRN_ERROR_INVALID_FUNCTION;
    }
  }

 private:
  IpConnectionManager& connections_;
};

// Nothing of what can be changed is kept in the device, so all there is to do is to refuse what would make it
// unreachable.
class ConfigurationVisitor : public Visitor {
 public:
  void visit(Connectable&) override {
    std::string address;
    std::uint32_t parsed = 0;
    const bool readable =
        data_ != nullptr &&
        AttributeCodec::getString(
            std::string(reinterpret_cast<const char*>(data_->getBuffer()), data_->getLength()),
            attribute::kAddress, address) == QRN_ERROR_SUCCESS;
    result_ = readable && parseAddress(address, parsed) ? QRN_ERROR_SUCCESS : QRN_ERROR_INVALID_PARAMETER;
  }
};

constexpr std::array kChangeable = {attribute::kAddress, attribute::kNickname, attribute::kPortname,
                                    attribute::kPortType, attribute::kTrueEndOfJob};
constexpr std::array kNothingToDo = {visitor_name::kFlushPrintBuffer, visitor_name::kSetMaxPacketSize,
                                     visitor_name::kStartJobPrinter};

template <std::size_t N>
bool contains(const std::array<const char*, N>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

Visitor* IpVisitorManager::getVisitor(const std::string& name) {
  if (name == visitor_name::kNpaData) return new NpaDataVisitor(connections_);
  if (contains(kChangeable, name)) return new ConfigurationVisitor;
  return new AnsweringVisitor(contains(kNothingToDo, name) ? QRN_ERROR_SUCCESS : QRN_ERROR_INVALID_FUNCTION);
}

void IpVisitorManager::releaseVisitor(Visitor* visitor) { delete visitor; }

}  // namespace qvn::ipv4
