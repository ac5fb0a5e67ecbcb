// What the thread that reads a channel sleeps on. Others may read the channel themselves for a while, without
// waking that thread.
#pragma once

#include <cstdint>

#include "platform/base/unique_descriptor.h"
#include "shared/channel/channel.h"
#include "shared/channel/wake_up.h"

namespace qvn::shared {

class ChannelWatch {
 public:
  // Before all others: 0, or why the system has no descriptors for it.
  std::uint32_t open(Channel& channel);

  // Returns when the channel has something to read or has ended, after a call, or after so many milliseconds
  // (-1: never).
  void wait(int timeout);

  // Makes the wait return, or the next one.
  void call() { called_.raise(); }

  // From now on what comes is somebody else's, until the watch is resumed.
  void pause();
  void resume();

 private:
  void watchFor(std::uint32_t events);

  Channel* channel_ = nullptr;
  platform::UniqueDescriptor set_;
  WakeUp called_;
};

}  // namespace qvn::shared
