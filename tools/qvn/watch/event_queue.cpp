#include "watch/event_queue.h"

#include <chrono>
#include <ctime>
#include <iostream>
#include <utility>

#include "platform/base/clock.h"
#include "shared/client/failure.h"
#include "shared/client/interrupt.h"

namespace qvn::cli {

namespace {

constexpr platform::Milliseconds kIdleInterval = 3000;

}  // namespace

void EventQueue::add(Json event) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (waiting_.size() < kMost) {
    waiting_.push_back(std::move(event));
  } else {
    lost_ = true;
  }
  changed_.notify_one();
}

void EventQueue::stop() {
  const std::lock_guard<std::mutex> lock(mutex_);
  stopped_ = true;
  changed_.notify_one();
}

std::optional<Json> EventQueue::next(const std::function<void()>& idle) {
  std::unique_lock<std::mutex> lock(mutex_);
  while (!platform::clock().wait(lock, changed_, kIdleInterval,
                                 [this] { return stopped_ || !waiting_.empty(); })) {
    lock.unlock();
    idle();
    lock.lock();
  }
  if (waiting_.empty()) {
    return std::nullopt;
  }
  if (waiting_.size() == 1 && std::exchange(lost_, false)) {
    std::cerr << "qvn: events were lost, they came faster than they could be printed\n";
  }
  Json event = std::move(waiting_.front());
  waiting_.pop_front();
  return event;
}

void EventQueue::print(std::size_t count, const std::function<void(const Json&)>& printOne,
                       const std::function<void()>& idle) {
  OnInterrupt onInterrupt([this] { stop(); });
  for (std::size_t printed = 0; count == 0 || printed < count; ++printed) {
    const auto event = next(idle);
    if (!event) {
      throw Interrupted("stopped watching");
    }
    printOne(*event);
    if (!std::cout.flush()) {
      return;
    }
  }
}

std::string timeOfEvent() {
  const auto time = std::chrono::system_clock::now();
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  const auto milliseconds =
      std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count() % 1000;
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  char text[32];
  const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
  std::snprintf(text + length, sizeof text - length, ".%03dZ", static_cast<int>(milliseconds));
  return text;
}

}  // namespace qvn::cli
