// RunningCalls: the calls of clients that are going on, for whoever must wait until one is over.
#pragma once

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace qvn {

// Guarded by its owner's mutex, which every operation wants held. Whoever waits has first seen to it that no
// further call with the key begins.
template <typename Key>
class RunningCalls {
 public:
  // A call on this thread.
  void begin(const Key& key) { calls_.push_back({key, std::this_thread::get_id()}); }

  void end(const Key& key) {
    const auto found = std::find_if(calls_.rbegin(), calls_.rend(), [&](const Call& call) {
      return call.key == key && call.thread == std::this_thread::get_id();
    });
    if (found != calls_.rend()) calls_.erase(std::next(found).base());
    ended_.notify_all();
  }

  // Returns when no call with the key is running. A thread that is itself inside a call does not wait: two
  // callbacks that unregister each other must not wait for each other.
  void wait(const Key& key, std::unique_lock<std::mutex>& lock) {
    const bool inside = std::any_of(calls_.begin(), calls_.end(), [](const Call& call) {
      return call.thread == std::this_thread::get_id();
    });
    if (inside) return;
    ended_.wait(lock, [&] {
      return std::none_of(calls_.begin(), calls_.end(), [&](const Call& call) { return call.key == key; });
    });
  }

 private:
  struct Call {
    Key key;
    std::thread::id thread;
  };

  std::vector<Call> calls_;
  std::condition_variable ended_;
};

}  // namespace qvn
