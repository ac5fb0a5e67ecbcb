// VisitorManager: gives the operations of a transport by name.
#pragma once

#include <string>

#include "qvn/transport/visitor.h"

namespace qvn {

// The names of the visitors that the library asks for. The visitor that applies a changed attribute of a
// device is named by the attribute's descriptor (attribute_codec.h).
namespace visitor_name {
inline constexpr char kStartJobPrinter[] = "startJobPrinter";
inline constexpr char kFlushPrintBuffer[] = "flushPrintBufferVisitor";
inline constexpr char kCache[] = "cacheVisitor";
inline constexpr char kSetMaxPacketSize[] = "setMaxPacketSizeVisitor";
inline constexpr char kNpaData[] = "npaDataVisitor";
}  // namespace visitor_name

// Lives as long as its module is loaded; any thread may call it.
//
// The order of the virtual operations is part of the interface between the library and its plug-ins.
class VisitorManager {
 public:
  virtual ~VisitorManager() = default;

  // A visitor for the operation. Never null: for a name it does not know a transport gives one whose result
  // is 1. The transport owns it; it is valid until it is released.
  virtual Visitor* getVisitor(const std::string& name) = 0;
  virtual void releaseVisitor(Visitor* visitor) = 0;
};

}  // namespace qvn
