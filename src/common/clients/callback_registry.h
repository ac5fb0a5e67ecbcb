// CallbackRegistry: the clients that want to be called back about a device.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <vector>

#include "common/clients/client_callback.h"
#include "common/clients/running_calls.h"

namespace qvn {

// One registration per client. Any thread may register, unregister and call; a client is called without a
// lock held, so that it may do all of that from inside its callback.
template <typename Registration>
class CallbackRegistry {
 public:
  // Replaces the registration that the client has.
  void add(std::uint32_t clientId, const Registration& registration) {
    std::lock_guard<std::mutex> lock(mutex_);
    registrations_[clientId] = registration;
  }

  // False when the client has none. No call of the client begins from now on.
  bool remove(std::uint32_t clientId) {
    std::lock_guard<std::mutex> lock(mutex_);
    return registrations_.erase(clientId) != 0;
  }

  // Returns when no call of the client is running; at once on a thread that is itself inside a callback of
  // this registry. Call it without a lock that a callback may want.
  void waitForCalls(std::uint32_t clientId) {
    std::unique_lock<std::mutex> lock(mutex_);
    running_.wait(clientId, lock);
  }

  std::size_t size() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return registrations_.size();
  }

  // Every registration, copied.
  std::map<std::uint32_t, Registration> all() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return registrations_;
  }

  // Calls `call(clientId, registration)` for each client that is registered now and still is when its turn
  // comes.
  template <typename Call>
  void callEach(Call&& call) {
    std::vector<std::uint32_t> clientIds;
    {
      std::lock_guard<std::mutex> lock(mutex_);
      for (const auto& entry : registrations_) clientIds.push_back(entry.first);
    }
    for (const std::uint32_t clientId : clientIds) {
      Registration registration;
      if (!begin(clientId, registration)) continue;
      const CallEnd end{*this, clientId};
      const ClientCallback::Scope callback;
      call(clientId, registration);
    }
  }

 private:
  struct CallEnd {
    CallbackRegistry& registry;
    std::uint32_t clientId;
    ~CallEnd() { registry.end(clientId); }
  };

  bool begin(std::uint32_t clientId, Registration& registration) {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto found = registrations_.find(clientId);
    if (found == registrations_.end()) return false;
    registration = found->second;
    running_.begin(clientId);
    return true;
  }

  void end(std::uint32_t clientId) {
    std::lock_guard<std::mutex> lock(mutex_);
    running_.end(clientId);
  }

  // Guards what follows.
  mutable std::mutex mutex_;
  std::map<std::uint32_t, Registration> registrations_;
  RunningCalls<std::uint32_t> running_;
};

}  // namespace qvn
