// Initialization: counts QvnInitialize and QvnUninitialize; the first makes System, the last takes it down.
#pragma once

#include <cstdint>

#include "api/call_gate.h"

namespace qvn {

class Initialization {
 public:
  // Waits while System is being taken down; inside a callback it is refused then.
  static std::uint32_t initialize();
  // Inside a callback the last one is refused: it waits for the threads that callbacks run on.
  static std::uint32_t uninitialize();

  // For the functions that use the library's services whether it is initialised or not: they are not taken
  // down for as long as this lives. Inside a callback it is refused while they are.
  class [[nodiscard]] Hold {
   public:
    Hold();
    ~Hold();
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

   private:
    CallGate::Visit visit_;
  };
};

}  // namespace qvn
