// What stands in for a transport that cannot be loaded: every operation on its devices fails with a code.
#pragma once

#include <memory>

#include "qvn/result_codes.h"
#include "qvn/transport/connectable.h"
#include "qvn/transport/connection_manager.h"
#include "qvn/transport/discoverer.h"
#include "qvn/transport/visitor.h"
#include "qvn/transport/visitor_manager.h"

namespace qvn {

// Keeps nothing that it is told, since the threads of all devices tell it at once.
class NullConnection : public Connectable {
 public:
  bool setChild(std::uint32_t index, Connectable* child) override;
  void accept(Visitor& visitor) override;
  void releaseChild0() override;
  void releaseChild1() override;
  std::uint32_t doOpen() override;
  void setLabel(const std::string& label) override;
  void setTag(std::uint32_t tag) override;
};

// One null connection, shared by all.
class FallbackConnectionManager : public ConnectionManager {
 public:
  Connectable* getConnection(const std::string& deviceAttributes, const std::string& connectionName) override;
  void releaseConnection(Connectable* connection) override;

 private:
  NullConnection connection_;
};

// A visitor that does nothing, with result 1.
class NullVisitor : public Visitor {
 public:
  NullVisitor() { result_ = QRN_ERROR_INVALID_FUNCTION; }
  void visit(Connectable& connection) override;
};

class FallbackVisitorManager : public VisitorManager {
 public:
  Visitor* getVisitor(const std::string& name) override;
  // The visitor ends here: nobody else owns it.
  void releaseVisitor(Visitor* visitor) override;
};

class FallbackDiscoverer : public Discoverer {
 public:
  std::uint32_t discover(const std::string& options) override;
};

}  // namespace qvn
