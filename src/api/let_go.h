// Gives up a reference on a device's object.
#pragma once

#include <memory>
#include <utility>

#include "api/deferred_calls.h"
#include "common/clients/client_callback.h"

namespace qvn {

// The last reference destroys the object. Inside a client's callback, which may run on that very object, the
// reference is kept until the callback is over.
template <typename Object>
void letGo(std::shared_ptr<Object> object) {
  if (object != nullptr && ClientCallback::isRunning()) {
    DeferredCalls::getInstance().post([kept = std::move(object)] {});
  }
}

}  // namespace qvn
