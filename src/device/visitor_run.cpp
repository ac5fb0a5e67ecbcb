#include "device/visitor_run.h"

#include "common/exception.h"
#include "qvn/result_codes.h"
#include "transport/transport_dll.h"
#include "transport/transports.h"

namespace qvn {

VisitorRun::VisitorRun(Device& device, const std::string& visitorName)
    : device_(device),
      manager_(Transports::getInstance().getVisitorManager(device.getAttributes())),
      visitor_(callTransport("getVisitor", [&] { return manager_.getVisitor(visitorName); })) {}

VisitorRun::~VisitorRun() {
  if (visitor_ == nullptr) return;
  try {
    manager_.releaseVisitor(visitor_);
  } catch (...) {
    // The visitor is the transport's, whatever it makes of the release.
  }
}

std::uint32_t VisitorRun::run(Connectable& connection, Data* data) {
  if (visitor_ == nullptr) return QRN_ERROR_INVALID_FUNCTION;
  return callTransport("visitor", [&] {
    if (data != nullptr) visitor_->setData(*data);
    device_.accept(*visitor_);
    connection.accept(*visitor_);
    return visitor_->getResult();
  });
}

void VisitorRun::cancel() {
  if (visitor_ == nullptr) return;
  try {
    visitor_->cancel();
  } catch (...) {
    // Then it ends when its time-out does.
  }
}

}  // namespace qvn
