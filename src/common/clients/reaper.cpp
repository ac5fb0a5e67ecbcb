#include "common/clients/reaper.h"

#include <exception>
#include <utility>

#include "common/clients/client_call.h"
#include "common/exception.h"
#include "common/logging/basic_logger.h"

namespace qvn {

Reaper::Reaper() : runnable_(*this, &Reaper::run) {}

Reaper::~Reaper() {
  flush();
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    stop_ = true;
  }
  changed_.notify_all();
  thread_.reset();
}

void Reaper::post(std::function<void()> work) noexcept {
  const std::lock_guard<std::mutex> lock(mutex_);
  try {
    work_.push_back(std::move(work));
    if (thread_ == nullptr) {
      auto thread = std::make_unique<Thread>(runnable_);
      thread->launch();
      thread_ = std::move(thread);
    }
  } catch (const std::exception&) {
    // No memory: the object stays, which is less than ending it here.
  } catch (const Exception&) {
    // No thread: the next one who posts tries again.
  }
  changed_.notify_all();
}

void Reaper::flush() {
  if (ClientCall::isRunning()) return;
  std::unique_lock<std::mutex> lock(mutex_);
  // There may be no thread to be had.
  while (thread_ == nullptr && !work_.empty()) doFirst(lock);
  changed_.wait(lock, [&] { return work_.empty() && !isAtWork_; });
}

std::uint32_t Reaper::run() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (true) {
    changed_.wait(lock, [&] { return stop_ || !work_.empty(); });
    if (work_.empty()) return 0;
    doFirst(lock);
  }
}

void Reaper::doFirst(std::unique_lock<std::mutex>& lock) {
  std::list<std::function<void()>> first;
  first.splice(first.begin(), work_, work_.begin());
  isAtWork_ = true;
  lock.unlock();
  try {
    first.front()();
  } catch (...) {
    // Whoever asked for it has long been answered.
    logError(log_component::server(), [] { return LogText() << "Reaper::run() Caught Exception"; });
  }
  first.clear();
  lock.lock();
  isAtWork_ = false;
  changed_.notify_all();
}

}  // namespace qvn
