#include "api/deferred_calls.h"

#include <utility>

namespace qvn {

DeferredCalls::~DeferredCalls() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stop_ = true;
  }
  changed_.notify_all();
  // Waits for the thread.
  thread_.reset();
}

void DeferredCalls::post(std::function<void()> call) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (!thread_) {
    runnable_ = std::make_unique<MethodRunnable<DeferredCalls>>(*this, &DeferredCalls::run);
    auto thread = std::make_unique<Thread>(*runnable_);
    thread->launch();
    thread_ = std::move(thread);
  }
  calls_.push_back(std::move(call));
  changed_.notify_all();
}

std::uint32_t DeferredCalls::run() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (true) {
    changed_.wait(lock, [&] { return stop_ || !calls_.empty(); });
    if (calls_.empty()) return 0;
    const std::function<void()> call = std::move(calls_.front());
    calls_.pop_front();
    lock.unlock();
    try {
      call();
    } catch (...) {
      // Its client has long been answered.
    }
    lock.lock();
  }
}

}  // namespace qvn
