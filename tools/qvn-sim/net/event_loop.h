// The one thread of the simulator: it waits for sockets and timers and calls their handlers.
#pragma once

#include <chrono>
#include <functional>
#include <map>

namespace sim {

class EventLoop {
 public:
  using Clock = std::chrono::steady_clock;
  using Handler = std::function<void()>;

  // Calls `onReadable` whenever the descriptor can be read, was closed by the peer or has an error. Handlers
  // may be called once too often and must not block. Watching again replaces the handler; without one the
  // descriptor is watched for watchWritable alone.
  void watch(int fd, Handler onReadable);
  // Calls `onWritable` as well, whenever a watched descriptor takes data, until unwatchWritable.
  void watchWritable(int fd, Handler onWritable);
  void unwatchWritable(int fd);
  // Ends both.
  void unwatch(int fd);

  // Calls `handler` once after the delay, or at the moment; in the order of the calls when moments are equal.
  void after(std::chrono::milliseconds delay, Handler handler);
  void at(Clock::time_point moment, Handler handler);
  // At once, before this returns, when the moment has passed.
  void atOrNow(Clock::time_point moment, Handler handler);

  // Runs until stop.
  void run();
  void stop() { stopped_ = true; }

 private:
  struct Watch {
    Handler onReadable;  // either is none when that is of no interest
    Handler onWritable;
  };

  void call(int fd, Handler Watch::*which);
  void runDueTimers();
  int millisecondsToNextTimer() const;

  std::map<int, Watch> watched_;
  std::multimap<Clock::time_point, Handler> timers_;
  bool stopped_ = false;
};

}  // namespace sim
