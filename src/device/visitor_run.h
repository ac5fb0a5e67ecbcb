// Runs one named operation of a device's transport on a connection.
#pragma once

#include <cstdint>
#include <string>

#include "device/connection.h"
#include "qvn/result_codes.h"
#include "qvn/transport/device.h"
#include "qvn/transport/visitor.h"
#include "qvn/transport/visitor_manager.h"
#include "transport/transports.h"

namespace qvn {

// A visitor of the device's transport, released when the scope ends. What the transport throws is a result
// code.
class VisitorRun {
 public:
  VisitorRun(Device& device, const std::string& visitorName);
  ~VisitorRun();
  VisitorRun(const VisitorRun&) = delete;
  VisitorRun& operator=(const VisitorRun&) = delete;

  // Hands the visitor the device, and the data when there is any, lets the connection run it and gives its
  // result.
  std::uint32_t run(const Connection& connection, Data* data = nullptr);

  // Any thread, before the run or during it: it is to end as soon as it can. Does not wait for that.
  void cancel();

 private:
  Device& device_;
  FromTransport<VisitorManager> manager_{};
  Visitor* visitor_ = nullptr;
  std::uint32_t rc_ = QRN_ERROR_SUCCESS;  // why there is no visitor
};

}  // namespace qvn
