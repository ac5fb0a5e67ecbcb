// A request to stop, which may come from any thread and from a signal's handler.
#pragma once

#include <atomic>

namespace qvn::scan {

class CancelSignal {
 public:
  // Throws std::system_error when the system gives no descriptor.
  CancelSignal();
  ~CancelSignal();
  CancelSignal(const CancelSignal&) = delete;
  CancelSignal& operator=(const CancelSignal&) = delete;

  void raise() noexcept;
  void clear() noexcept;
  bool raised() const noexcept { return raised_.load(); }
  // Can be read from as long as it is raised.
  int descriptor() const noexcept { return descriptor_; }

 private:
  static_assert(std::atomic<bool>::is_always_lock_free);

  std::atomic<bool> raised_{false};
  int descriptor_;
};

}  // namespace qvn::scan
