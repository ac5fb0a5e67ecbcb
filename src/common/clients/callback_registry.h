// CallbackRegistry: the clients that want to be called back about devices.
#pragma once

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "common/clients/client_call.h"

namespace qvn {

// How the clients of a registry are called.
struct CallbackRules {
  // In the order of their ids, or as they were added.
  enum class Order { ByClient, AsAdded } order = Order::ByClient;
  // Whether one that is removed during a delivery still gets what is being delivered.
  bool removedStillCalled = false;
  // Whether one that throws is registered no more.
  bool throwingIsRemoved = false;
};

// One registration per device and client. Any thread may add, remove and call; clients are called without a
// lock held, so that they may do all of that from inside their callbacks. `Registration` has a `clientId`.
template <typename Registration>
class CallbackRegistry {
 public:
  explicit CallbackRegistry(CallbackRules rules) : rules_(rules) {}
  CallbackRegistry(const CallbackRegistry&) = delete;
  CallbackRegistry& operator=(const CallbackRegistry&) = delete;

  // False, and nothing changed, when the client has a registration.
  bool add(std::uint32_t handle, const Registration& registration) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (find(handle, registration.clientId) != entries_.end()) return false;
    insert(handle, registration);
    return true;
  }

  // The same, in the place of the one that the client has.
  void replace(std::uint32_t handle, const Registration& registration) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (const auto known = find(handle, registration.clientId); known != entries_.end()) drop(known);
    insert(handle, registration);
  }

  // No call of the client begins from now on. False when it has no registration.
  bool remove(std::uint32_t handle, std::uint32_t clientId) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = find(handle, clientId);
    if (found == entries_.end()) return false;
    drop(found);
    return true;
  }

  void removeAll(std::uint32_t handle) {
    const std::lock_guard<std::mutex> lock(mutex_);
    for (auto entry = entries_.begin(); entry != entries_.end();) {
      entry = (*entry)->handle == handle ? drop(entry) : std::next(entry);
    }
  }

  // Returns when no call of a removed registration of the device is running: of the client's, or with 0 of
  // any. At once inside a callback. Call it without a lock.
  void waitForCalls(std::uint32_t handle, std::uint32_t clientId) {
    if (ClientCall::isRunning()) return;
    std::unique_lock<std::mutex> lock(mutex_);
    callEnded_.wait(lock, [&] {
      return std::none_of(leaving_.begin(), leaving_.end(), [&](const EntryPtr& entry) {
        return entry->handle == handle && (clientId == 0 || entry->registration.clientId == clientId);
      });
    });
  }

  // `visit(registration)` for each one of the device, under the registry's lock.
  template <typename Visit>
  void forEach(std::uint32_t handle, Visit&& visit) const {
    const std::lock_guard<std::mutex> lock(mutex_);
    for (const EntryPtr& entry : entries_) {
      if (entry->handle == handle) visit(entry->registration);
    }
  }

  bool isEmpty() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return entries_.empty();
  }

  // `call(registration)` for each client of the device that is registered when the delivery begins, and that
  // `wants(registration)`, asked under the registry's lock, when its turn comes. What one throws goes to
  // `onThrown(registration, description)`, and the delivery goes on. False when none was called.
  template <typename Wants, typename Call, typename OnThrown>
  bool callEach(std::uint32_t handle, Wants&& wants, Call&& call, OnThrown&& onThrown) {
    bool called = false;
    for (const EntryPtr& entry : beginDelivery(handle)) {
      if (beginCall(*entry, wants)) {
        called = true;
        const std::optional<std::string> thrown = ClientCall::run([&] { call(entry->registration); });
        if (thrown) onThrown(entry->registration, *thrown);
        endCall(entry, thrown && rules_.throwingIsRemoved);
      }
    }
    return called;
  }

 private:
  struct Entry {
    std::uint32_t handle;
    Registration registration;
    std::uint32_t calls = 0;
    bool removed = false;
  };
  using EntryPtr = std::shared_ptr<Entry>;
  using Entries = std::vector<EntryPtr>;

  typename Entries::iterator find(std::uint32_t handle, std::uint32_t clientId) {
    return std::find_if(entries_.begin(), entries_.end(), [&](const EntryPtr& entry) {
      return entry->handle == handle && entry->registration.clientId == clientId;
    });
  }

  void insert(std::uint32_t handle, const Registration& registration) {
    auto entry = std::make_shared<Entry>(Entry{handle, registration});
    auto place = entries_.end();
    if (rules_.order == CallbackRules::Order::ByClient) {
      place = std::find_if(entries_.begin(), entries_.end(), [&](const EntryPtr& other) {
        return other->registration.clientId > registration.clientId;
      });
    }
    entries_.insert(place, std::move(entry));
  }

  typename Entries::iterator drop(typename Entries::iterator position) {
    (*position)->removed = true;
    if ((*position)->calls > 0) leaving_.push_back(*position);
    return entries_.erase(position);
  }

  Entries beginDelivery(std::uint32_t handle) {
    Entries receivers;
    const std::lock_guard<std::mutex> lock(mutex_);
    for (const EntryPtr& entry : entries_) {
      if (entry->handle != handle) continue;
      receivers.push_back(entry);
      if (rules_.removedStillCalled) ++entry->calls;
    }
    return receivers;
  }

  template <typename Wants>
  bool beginCall(Entry& entry, Wants&& wants) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (rules_.removedStillCalled) return true;
    if (entry.removed || !wants(entry.registration)) return false;
    ++entry.calls;
    return true;
  }

  void endCall(const EntryPtr& entry, bool remove) {
    const std::lock_guard<std::mutex> lock(mutex_);
    --entry->calls;
    if (remove && !entry->removed) drop(std::find(entries_.begin(), entries_.end(), entry));
    if (!entry->removed || entry->calls > 0) return;
    std::erase(leaving_, entry);
    callEnded_.notify_all();
  }

  const CallbackRules rules_;
  mutable std::mutex mutex_;  // guards what follows
  std::condition_variable callEnded_;
  Entries entries_;
  Entries leaving_;  // removed while they are being called
};

}  // namespace qvn
