// Notices when a host has stopped using something, where nothing else tells.
#pragma once

#include <chrono>
#include <functional>
#include <utility>

#include "net/event_loop.h"

namespace sim::usb {

class IdleWatch {
 public:
  // Calls `onIdle` once nothing was used for a second and `isBusy` says that nothing is in use.
  IdleWatch(EventLoop& loop, std::function<bool()> isBusy, std::function<void()> onIdle)
      : loop_(loop), isBusy_(std::move(isBusy)), onIdle_(std::move(onIdle)) {}

  void used() {
    lastUse_ = EventLoop::Clock::now();
    if (!std::exchange(isWatching_, true)) watch();
  }

 private:
  static constexpr std::chrono::milliseconds kIdle{1000};

  void watch() {
    loop_.at(lastUse_ + kIdle, [this] {
      if (isBusy_()) lastUse_ = EventLoop::Clock::now();
      if (EventLoop::Clock::now() < lastUse_ + kIdle) {
        watch();
        return;
      }
      isWatching_ = false;
      onIdle_();
    });
  }

  EventLoop& loop_;
  const std::function<bool()> isBusy_;
  const std::function<void()> onIdle_;
  EventLoop::Clock::time_point lastUse_;
  bool isWatching_ = false;
};

}  // namespace sim::usb
