// For the start of a thread, which inherits it: a client's signal handlers run on the client's threads.
// Whatever is started through this layer starts so; who starts a thread otherwise, or calls a library that
// may, does it in the scope of one.
#pragma once

#include <memory>

#include "platform/base/export.h"

namespace qvn::platform {

class QVN_PLATFORM_API AllSignalsBlocked {
 public:
  AllSignalsBlocked();
  // Puts back the mask that the calling thread had.
  ~AllSignalsBlocked();
  AllSignalsBlocked(const AllSignalsBlocked&) = delete;
  AllSignalsBlocked& operator=(const AllSignalsBlocked&) = delete;

 private:
  struct Mask;
  const std::unique_ptr<Mask> previous_;
};

}  // namespace qvn::platform
