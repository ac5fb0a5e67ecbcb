// HandleTable: the live objects of one kind of device, by handle, with a count of references each.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "common/clients/reaper.h"
#include "qvn/transport/critical_section.h"

namespace qvn {

// An object lives from the first acquire to the last release; whoever got it keeps it alive for the call it
// is in. The reaper ends it. The table's lock is held while a store restores an object, never the other way
// round.
template <typename Object>
class HandleTable {
 public:
  HandleTable(const HandleTable&) = delete;
  HandleTable& operator=(const HandleTable&) = delete;

  // The object of the handle, restored from its store when it is not live, with one reference more. Null when
  // there is none.
  std::shared_ptr<Object> acquire(std::uint32_t handle) {
    CriticalSectionLock lock(lock_);
    auto found = entries_.find(handle);
    if (found == entries_.end()) {
      if (restore(handle) != 0) return nullptr;
      found = entries_.find(handle);
      if (found == entries_.end()) return nullptr;
    }
    ++found->second.references;
    return found->second.object;
  }

  // The object of the handle if it is live. The references stay as they are.
  std::shared_ptr<Object> find(std::uint32_t handle) {
    CriticalSectionLock lock(lock_);
    const auto found = entries_.find(handle);
    return found == entries_.end() ? nullptr : found->second.object;
  }

  // Takes back one acquire; the last one removes the object. A handle that is not live is ignored.
  void release(std::uint32_t handle) {
    std::shared_ptr<Object> last;
    CriticalSectionLock lock(lock_);
    const auto found = entries_.find(handle);
    if (found == entries_.end()) return;
    if (found->second.references > 0) --found->second.references;
    if (found->second.references > 0) return;
    last = std::move(found->second.object);
    entries_.erase(found);
  }

  void add(std::uint32_t handle, std::shared_ptr<Object> object) {
    auto shared = Reaper::share(std::move(object));
    CriticalSectionLock lock(lock_);
    entries_[handle] = Entry{std::move(shared), 0};
  }

  // The objects that are live now.
  std::vector<std::shared_ptr<Object>> liveObjects() {
    CriticalSectionLock lock(lock_);
    std::vector<std::shared_ptr<Object>> objects;
    for (const auto& entry : entries_) objects.push_back(entry.second.object);
    return objects;
  }

  void clear() {
    std::map<std::uint32_t, Entry> ended;
    CriticalSectionLock lock(lock_);
    ended.swap(entries_);
  }

 protected:
  HandleTable() = default;
  ~HandleTable() = default;

  // Adds the object of a stored device; 0 or why there is none.
  virtual std::uint32_t restore(std::uint32_t handle) = 0;

 private:
  struct Entry {
    std::shared_ptr<Object> object;
    std::uint32_t references = 0;
  };

  CriticalSection lock_;
  std::map<std::uint32_t, Entry> entries_;
};

}  // namespace qvn
