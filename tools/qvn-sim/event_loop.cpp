#include "event_loop.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>
#include <vector>

namespace sim {

void EventLoop::watch(int fd, Handler onReadable) { watched_[fd] = std::move(onReadable); }

void EventLoop::unwatch(int fd) { watched_.erase(fd); }

void EventLoop::after(std::chrono::milliseconds delay, Handler handler) {
  timers_.emplace(Clock::now() + delay, std::move(handler));
}

void EventLoop::run() {
  std::vector<pollfd> polled;
  while (!stopped_) {
    polled.clear();
    for (const auto& [fd, handler] : watched_) polled.push_back({fd, POLLIN, 0});
    const int ready = poll(polled.data(), polled.size(), millisecondsToNextTimer());
    if (ready < 0 && errno != EINTR) throw std::system_error(errno, std::generic_category(), "poll");
    runDueTimers();
    if (ready <= 0) continue;
    for (const pollfd& entry : polled) {
      if (entry.revents == 0 || stopped_) continue;
      const auto found = watched_.find(entry.fd);
      if (found == watched_.end()) continue;
      const Handler handler = found->second;  // a handler may unwatch itself
      handler();
    }
  }
}

void EventLoop::runDueTimers() {
  const auto now = Clock::now();
  while (!timers_.empty() && timers_.begin()->first <= now) {
    const Handler handler = std::move(timers_.begin()->second);
    timers_.erase(timers_.begin());
    handler();
  }
}

int EventLoop::millisecondsToNextTimer() const {
  if (timers_.empty()) return -1;
  const auto left =
      std::chrono::ceil<std::chrono::milliseconds>(timers_.begin()->first - Clock::now()).count();
  return static_cast<int>(std::clamp<std::int64_t>(left, 0, 60000));
}

}  // namespace sim
