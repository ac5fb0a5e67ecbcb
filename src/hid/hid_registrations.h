// HidRegistrations: the registrations of clients by HID, called with their lock held.
#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "common/clients/client_callback.h"
#include "common/exception.h"
#include "qvn/transport/critical_section.h"

namespace qvn {

// A registration has a `clientId`. The lock is held while clients are called: another thread that changes the
// registrations waits for the end of a delivery. The delivering thread may change them too, from inside a
// callback: who is removed is called no more, who is added is called from the next delivery on.
template <typename Registration>
class HidRegistrations {
 public:
  // The first registration of a client counts.
  void add(std::uint32_t handle, const Registration& registration) {
    CriticalSectionLock lock(lock_);
    if (find(handle, registration.clientId) != entries_.end()) return;
    entries_.emplace(handle, std::make_shared<Entry>(Entry{registration}));
  }

  void remove(std::uint32_t handle, std::uint32_t clientId) {
    CriticalSectionLock lock(lock_);
    const auto found = find(handle, clientId);
    if (found == entries_.end()) return;
    found->second->removed = true;
    entries_.erase(found);
  }

  // Runs `call(registration)` for each of the HID's clients. What one throws goes to
  // `onThrown(registration, description)`; the client is removed after the last call.
  template <typename Call, typename OnThrown>
  void callEach(std::uint32_t handle, Call&& call, OnThrown&& onThrown) {
    CriticalSectionLock lock(lock_);
    std::vector<std::shared_ptr<Entry>> receivers;
    const auto [first, last] = entries_.equal_range(handle);
    for (auto entry = first; entry != last; ++entry) receivers.push_back(entry->second);
    std::vector<std::uint32_t> thrown;
    for (const auto& receiver : receivers) {
      if (receiver->removed) continue;
      try {
        const ClientCallback::Scope callback;
        call(receiver->registration);
      } catch (const Win32Exception& exception) {
        onThrown(receiver->registration, exception.describe());
        thrown.push_back(receiver->registration.clientId);
      } catch (...) {
        onThrown(receiver->registration, "unknown exception");
        thrown.push_back(receiver->registration.clientId);
      }
    }
    for (const std::uint32_t clientId : thrown) remove(handle, clientId);
  }

 private:
  struct Entry {
    Registration registration;
    bool removed = false;
  };
  using Entries = std::multimap<std::uint32_t, std::shared_ptr<Entry>>;

  typename Entries::iterator find(std::uint32_t handle, std::uint32_t clientId) {
    const auto [first, last] = entries_.equal_range(handle);
    const auto found = std::find_if(
        first, last, [&](const auto& entry) { return entry.second->registration.clientId == clientId; });
    return found == last ? entries_.end() : found;
  }

  CriticalSection lock_;
  Entries entries_;
};

}  // namespace qvn
