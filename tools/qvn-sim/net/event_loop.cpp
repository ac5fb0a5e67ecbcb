#include "net/event_loop.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>
#include <vector>

namespace sim {

void EventLoop::watch(int fd, Handler onReadable) { watched_[fd].onReadable = std::move(onReadable); }

void EventLoop::watchWritable(int fd, Handler onWritable) {
  const auto found = watched_.find(fd);
  if (found != watched_.end()) found->second.onWritable = std::move(onWritable);
}

void EventLoop::unwatchWritable(int fd) { watchWritable(fd, nullptr); }

void EventLoop::unwatch(int fd) { watched_.erase(fd); }

void EventLoop::after(std::chrono::milliseconds delay, Handler handler) {
  at(Clock::now() + delay, std::move(handler));
}

void EventLoop::at(Clock::time_point moment, Handler handler) { timers_.emplace(moment, std::move(handler)); }

void EventLoop::atOrNow(Clock::time_point moment, Handler handler) {
  if (moment <= Clock::now()) {
    handler();
  } else {
    at(moment, std::move(handler));
  }
}

void EventLoop::run() {
  std::vector<pollfd> polled;
  while (!stopped_) {
    polled.clear();
    for (const auto& [fd, watch] : watched_) {
      const int events = (watch.onReadable ? POLLIN : 0) | (watch.onWritable ? POLLOUT : 0);
      polled.push_back({fd, static_cast<short>(events), 0});
    }
    const int ready = poll(polled.data(), polled.size(), millisecondsToNextTimer());
    if (ready < 0 && errno != EINTR) throw std::system_error(errno, std::generic_category(), "poll");
    runDueTimers();
    if (ready <= 0) continue;
    for (const pollfd& entry : polled) {
      if ((entry.revents & ~POLLOUT) != 0) call(entry.fd, &Watch::onReadable);
      if ((entry.revents & POLLOUT) != 0) call(entry.fd, &Watch::onWritable);
    }
  }
}

void EventLoop::call(int fd, Handler Watch::*which) {
  const auto found = watched_.find(fd);
  if (stopped_ || found == watched_.end()) return;
  const Handler handler = found->second.*which;  // a handler may unwatch itself
  if (handler) handler();
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
