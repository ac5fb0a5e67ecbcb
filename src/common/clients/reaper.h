// Reaper: ends objects where no lock is held and no callback runs.
#pragma once

#include <condition_variable>
#include <functional>
#include <list>
#include <memory>
#include <mutex>

#include "common/process_service.h"
#include "common/threads/runnable.h"
#include "common/threads/thread.h"

namespace qvn {

// Whoever has the last reference on an object may hold any lock, or be inside the very callback that the
// object waits for when it ends. What ends is therefore handed over, and so are closes that a client asks for
// inside a callback. All of it is done in the order of handing over, on a thread that exists from the first
// time on.
class Reaper : public ProcessService<Reaper> {
 public:
  // Any thread, with whatever locks. Does not throw.
  void post(std::function<void()> work) noexcept;

  // Returns when all that was handed over is done; at once inside a callback. Call it without a lock.
  void flush();

  // A reference whose last copy hands the object over.
  template <typename Object>
  static std::shared_ptr<Object> share(std::shared_ptr<Object> object) {
    Object* const address = object.get();
    return std::shared_ptr<Object>(address, [kept = std::move(object)](Object*) mutable noexcept {
      getInstance().post([ending = std::move(kept)] {});
    });
  }

 private:
  friend class ProcessService<Reaper>;
  Reaper();
  // Does what is left and ends the thread.
  ~Reaper();

  std::uint32_t run();
  // Does what was handed over first, without the lock.
  void doFirst(std::unique_lock<std::mutex>& lock);

  std::mutex mutex_;  // guards what follows
  std::condition_variable changed_;
  std::list<std::function<void()>> work_;
  bool isAtWork_ = false;
  bool stop_ = false;
  std::unique_ptr<Thread> thread_;

  MethodRunnable<Reaper> runnable_;
};

}  // namespace qvn
