// One run of a body on a thread: what the thread and the handle share.
#pragma once

#include <pthread.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>

#include "platform/threads/thread.h"

namespace qvn::platform {

struct ThreadRun {
  std::function<std::uint32_t()> body;

  std::mutex mutex;  // guards what follows
  std::condition_variable changed;
  std::uint32_t id = 0;             // 0 until the thread runs
  std::atomic<bool> ended = false;  // may be looked at without the lock
  std::uint32_t exitCode = kStillActive;
  bool isAltered = false;            // the thread is not as others are, and runs nothing else
  std::optional<pthread_t> endsToo;  // the thread that ends with the run
  bool isAbandoned = false;          // nobody waits for that thread
};

}  // namespace qvn::platform
