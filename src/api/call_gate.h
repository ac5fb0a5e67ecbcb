// CallGate: counts the exported calls in flight, so that the last uninitialisation can wait for them.
#pragma once

#include <cstdint>

namespace qvn {

// Open while the library is initialised. No lock: entering and leaving are one atomic operation each.
class CallGate {
 public:
  // One call's pass. Without `entered` the library is not initialised and none of its services may be used.
  class [[nodiscard]] Pass {
   public:
    Pass();
    ~Pass();
    Pass(const Pass&) = delete;
    Pass& operator=(const Pass&) = delete;
    bool entered() const { return entered_; }

   private:
    bool entered_;
  };

  static void open();
  // Lets no new call in.
  static void close();
  // Waits until no call of any other thread is in flight, or the gate was opened again.
  static void drain();
  // Whether the gate is closed and no call of any other thread is in flight. Stays so until it is opened.
  static bool isDrained();
  // Whether the calling thread is inside a call (it is in a client's callback then).
  static bool isInsideCall();
};

}  // namespace qvn
