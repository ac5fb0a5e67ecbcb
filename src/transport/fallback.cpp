#include "transport/fallback.h"

namespace qvn {

bool NullConnection::setChild(std::uint32_t index, Connectable* /*child*/) { return index < 2; }
void NullConnection::releaseChild0() {}
void NullConnection::releaseChild1() {}
void NullConnection::setLabel(const std::string& /*label*/) {}
void NullConnection::setTag(std::uint32_t /*tag*/) {}

// The visitor belongs to a transport that is not there to talk to this connection.
void NullConnection::accept(Visitor& /*visitor*/) {}

std::uint32_t NullConnection::doOpen() { return QRN_ERROR_INVALID_FUNCTION; }

Connectable* FallbackConnectionManager::getConnection(const std::string& /*deviceAttributes*/,
                                                      const std::string& /*connectionName*/) {
  return &connection_;
}

void FallbackConnectionManager::releaseConnection(Connectable* /*connection*/) {}

void NullVisitor::visit(Connectable& /*connection*/) {}

Visitor* FallbackVisitorManager::getVisitor(const std::string& /*name*/) { return new NullVisitor; }

void FallbackVisitorManager::releaseVisitor(Visitor* visitor) { delete visitor; }

std::uint32_t FallbackDiscoverer::discover(const std::string& /*options*/) { return QRN_ERROR_SUCCESS; }

}  // namespace qvn
