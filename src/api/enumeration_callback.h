// Tells a client what an enumeration has found.
#pragma once

#include <cstdint>

#include "common/clients/client_call.h"
#include "common/logging/basic_logger.h"

namespace qvn {

// The enumeration goes on when the client throws.
template <typename Call>
void tellFound(std::uint32_t clientId, Call&& call) {
  const auto thrown = ClientCall::run(call);
  if (!thrown) return;
  logError(log_component::server(), [&] {
    return LogText() << "enumeration Caught Exception clientId=" << clientId << ", Exception=" << *thrown;
  });
}

}  // namespace qvn
