// Ends somebody's wait on descriptors, once.
#pragma once

#include <cstdint>

#include "platform/base/unique_descriptor.h"

namespace qvn::shared {

class WakeUp {
 public:
  // Before all others: 0, or why the system has no descriptor for it.
  std::uint32_t open();

  // Readable from a raise until it is taken.
  int fd() const { return event_.get(); }

  // Any thread.
  void raise();
  void take();

 private:
  platform::UniqueDescriptor event_;
};

}  // namespace qvn::shared
