// What a transport module is made of: the entry points are the same for all, and this is what differs.
#pragma once

#include <cstdint>
#include <memory>

#include "qvn/transport/connection_manager.h"
#include "qvn/transport/discoverer.h"
#include "qvn/transport/visitor_manager.h"
#include "shared/base/device_text.h"

namespace qvn::shared {

// Exists, like every thread of the module, between TransportInitialize and TransportUninitialize: its
// destructor closes everything and waits for the threads.
class Transport {
 public:
  virtual ~Transport() = default;

  // 0, or why the module cannot be used.
  virtual std::uint32_t start() { return 0; }

  virtual ConnectionManager& connectionManager() = 0;
  virtual VisitorManager& visitorManager() = 0;
  virtual Discoverer& discoverer() = 0;
};

// Each module defines these.
extern const TransportIdentity kTransportIdentity;
std::unique_ptr<Transport> makeTransport();

}  // namespace qvn::shared
