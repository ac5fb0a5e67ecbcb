// Whether the calling thread is inside a client's callback.
#pragma once

namespace qvn {

// What would end the callback's own thread, or destroy what it runs on, is put off while this holds.
class ClientCallback {
 public:
  class [[nodiscard]] Scope {
   public:
    Scope() { ++depth_; }
    ~Scope() { --depth_; }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;
  };

  static bool isRunning() { return depth_ > 0; }

 private:
  static inline thread_local int depth_ = 0;
};

}  // namespace qvn
