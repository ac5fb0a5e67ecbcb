// The operations that this transport knows, by name.
#pragma once

#include <string>

#include "qvn/transport/visitor.h"
#include "qvn/transport/visitor_manager.h"
#include "shared/connections/device_connections.h"

namespace qvn::shared {

// "npaDataVisitor" exchanges the data, an NPA packet, on the device's "bidi" connection, also when it is run
// on the "print" connection, which carries print data only. "namePrintJobVisitor" does the same and answers
// the request's code too; "startNpaModeVisitor" sends a packet to which there is no reply. A device without
// NPA answers 1 to the three. "getNpaModeVisitor" puts 1 or 0 into the data, "setNpaWrapModeVisitor" and
// "setNonNpaPrinterVisitor" take a number and have nothing to do with it, and so has "jobHeaderVisitor" with
// its text: a raw receiver must get the bytes of the job and no others. Each answers 87 to data of another
// form. A writeable attribute's descriptor accepts a changed attribute text, 87 when it puts the device at no
// valid place. "flushPrintBufferVisitor" flushes the channel of a "print" connection. Packets of any size are
// taken, so "setMaxPacketSizeVisitor" and "startJobPrinter" have nothing to do and answer 0. There is no
// cache channel: "cacheVisitor" answers 1, as does every other name.
//
// "escCommandVisitor" exchanges the data, an ESC command, on a Cpd scanner's "bidi" connection,
// "objectStoreDataVisitor" an XML document on a Bpd scanner's, "openHidVisitor" connects a HID's "alert"
// connection anew when the HID has ended it; on other connections they answer 1.
class DeviceVisitors : public VisitorManager {
 public:
  DeviceVisitors(DeviceConnections& connections, const DevicePlaces& places)
      : connections_(connections), places_(places) {}

  Visitor* getVisitor(const std::string& name) override;
  void releaseVisitor(Visitor* visitor) override;

 private:
  DeviceConnections& connections_;
  const DevicePlaces& places_;
};

}  // namespace qvn::shared
