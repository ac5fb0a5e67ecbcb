// How often and how long the backend tries again for a printer that it cannot have now.
#pragma once

#include <cstdint>
#include <functional>

#include "platform/base/clock.h"

namespace qvn::cups {

class Patience {
 public:
  // Waits that long; false when a stop was requested meanwhile.
  using Wait = std::function<bool(platform::Milliseconds)>;

  Patience(platform::Milliseconds limit, Wait wait);

  // Waits before the next try, twice as long each time up to a quarter of a minute. False when there must not
  // be one: the limit has passed since this object was made, or a stop was requested.
  bool again();

 private:
  std::uint64_t deadline_;
  Wait wait_;
  platform::Milliseconds pause_;
};

}  // namespace qvn::cups
