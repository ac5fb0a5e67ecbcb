// CallGate: counts the exported calls in flight, so that the last uninitialisation can wait for them.
#pragma once

#include <cstdint>

namespace qvn {

// Open while the library is initialised. No lock: entering and leaving are one atomic operation each. In a
// child made by fork while the gate was open or a call in flight it lets nobody in: what the parent's other
// threads had locked or begun stays so.
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

  // A call that runs whether the gate is open or not; close() does not wait for it.
  class [[nodiscard]] Visit {
   public:
    // Throws 1 when nobody is let in.
    Visit();
    ~Visit();
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;
  };

  static void open();
  // Lets no new call in and returns when none is in flight. Not from inside a call.
  static void close();
};

}  // namespace qvn
