// Initialization: counts QvnInitialize and QvnUninitialize; the first makes System, the last takes it down.
#pragma once

#include <cstdint>

namespace qvn {

class Initialization {
 public:
  static std::uint32_t initialize();
  // From inside a client's callback the last one only closes the library; what is left to do is done when the
  // exported call that the callback runs in returns.
  static std::uint32_t uninitialize();

  // Called when a thread leaves its outermost exported call.
  static void finishDeferred();
};

}  // namespace qvn
