// DeferredCalls: what a client asks for inside a callback and that cannot be done there, done soon
// afterwards.
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

// Closing a device from inside its own callback would destroy what the callback runs on. The calls run one
// after the other on a thread of this service, which exists from the first one on.
class DeferredCalls : public ProcessService<DeferredCalls> {
 public:
  void post(std::function<void()> call);

 private:
  friend class ProcessService<DeferredCalls>;
  DeferredCalls() = default;
  // Runs what is left and ends the thread.
  ~DeferredCalls();

  std::uint32_t run();

  // Guards what follows.
  std::mutex mutex_;
  std::condition_variable changed_;
  std::list<std::function<void()>> calls_;
  bool stop_ = false;
  std::unique_ptr<MethodRunnable<DeferredCalls>> runnable_;
  std::unique_ptr<Thread> thread_;
};

}  // namespace qvn
