// The operations that this transport knows, by name.
#pragma once

#include <string>

#include "ip_connection_manager.h"
#include "qvn/transport/visitor_manager.h"

namespace qvn::ipv4 {

// "npaDataVisitor" exchanges the data, an NPA packet, on the device's "bidi" connection, also when it is run
// on the "print" connection, which carries print data only. A writeable attribute's descriptor accepts a
// changed attribute text, 87 when it puts the device at no valid address. Nothing is buffered and packets of
// any size are taken, so "flushPrintBufferVisitor", "setMaxPacketSizeVisitor" and "startJobPrinter" have
// nothing to do and answer 0. There is no cache channel: "cacheVisitor" answers 1, as does every other name.
class IpVisitorManager : public VisitorManager {
 public:
  explicit IpVisitorManager(IpConnectionManager& connections) : connections_(connections) {}

  Visitor* getVisitor(const std::string& name) override;
  void releaseVisitor(Visitor* visitor) override;

 private:
  IpConnectionManager& connections_;
};

}  // namespace qvn::ipv4
