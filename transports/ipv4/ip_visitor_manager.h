// The operations that this transport knows, by name.
#pragma once

#include <string>

#include "qvn/transport/visitor_manager.h"

namespace qvn::ipv4 {

// "npaDataVisitor" exchanges the data, an NPA packet, on a "bidi" connection. A writeable attribute's
// descriptor accepts a changed attribute text, 87 when it puts the device at no valid address. Nothing is
// buffered and packets of any size are taken, so "flushPrintBufferVisitor", "setMaxPacketSizeVisitor" and
// "startJobPrinter" have nothing to do and answer 0. There is no cache channel: "cacheVisitor" answers 1, as
// does every other name.
class IpVisitorManager : public VisitorManager {
 public:
  Visitor* getVisitor(const std::string& name) override;
  void releaseVisitor(Visitor* visitor) override;
};

}  // namespace qvn::ipv4
