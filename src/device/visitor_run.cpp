#include "device/visitor_run.h"

#include "transport/call_transport.h"

namespace qvn {

VisitorRun::VisitorRun(Device& device, const std::string& visitorName) : device_(device) {
  rc_ = transportResult("getVisitor", [&] {
    manager_ = Transports::getInstance().getVisitorManager(device.getAttributes());
    visitor_ = manager_.service->getVisitor(visitorName);
    return visitor_ != nullptr ? QRN_ERROR_SUCCESS : QRN_ERROR_INVALID_FUNCTION;
  });
}

VisitorRun::~VisitorRun() {
  if (visitor_ == nullptr) return;
  transportResult("releaseVisitor", [&] {
    manager_.service->releaseVisitor(visitor_);
    return QRN_ERROR_SUCCESS;
  });
}

std::uint32_t VisitorRun::run(const Connection& connection, Data* data) {
  if (visitor_ == nullptr) return rc_;
  return transportResult("visitor", [&] {
    if (data != nullptr) visitor_->setData(*data);
    device_.accept(*visitor_);
    connection.connectable().accept(*visitor_);
    return visitor_->getResult();
  });
}

void VisitorRun::cancel() {
  if (visitor_ == nullptr) return;
  // What does not take it ends when its time-out does.
  transportResult("cancel", [&] {
    visitor_->cancel();
    return QRN_ERROR_SUCCESS;
  });
}

}  // namespace qvn
