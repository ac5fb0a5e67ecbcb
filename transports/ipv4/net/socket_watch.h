// What the thread that reads a socket sleeps on. Others may read the socket themselves for a while, without
// waking that thread.
#pragma once

#include <cstdint>

#include "net/wake_up.h"
#include "platform/base/unique_descriptor.h"

namespace qvn::ipv4 {

class SocketWatch {
 public:
  // Before all others: 0, or why the system has no descriptors for it.
  std::uint32_t open(int socket);

  // Returns when the socket has something to read or has ended, after a call, or after so many milliseconds
  // (-1: never).
  void wait(int timeout);

  // Makes the wait return, or the next one.
  void call() { called_.raise(); }

  // From now on what comes is somebody else's, until the watch is resumed. The end of the connection for both
  // sides still ends the wait.
  void pause() { watchFor(0); }
  void resume();

 private:
  void watchFor(std::uint32_t events);

  int socket_ = -1;
  platform::UniqueDescriptor set_;
  WakeUp called_;
};

}  // namespace qvn::ipv4
