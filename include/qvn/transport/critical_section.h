// The lock within one process that every shared object embeds, and its scoped holder.
#pragma once

#include <mutex>

namespace qvn {

// The holding thread may enter again and leaves once per entry.
class CriticalSection {
 public:
  CriticalSection() = default;
  CriticalSection(const CriticalSection&) = delete;
  CriticalSection& operator=(const CriticalSection&) = delete;

  void enter() { mutex_.lock(); }
  void leave() { mutex_.unlock(); }

  // False when another thread holds it.
  [[nodiscard]] bool tryEnter() { return mutex_.try_lock(); }

 private:
  std::recursive_mutex mutex_;
};

class [[nodiscard]] CriticalSectionLock {
 public:
  explicit CriticalSectionLock(CriticalSection& section) : section_(section) { section_.enter(); }
  ~CriticalSectionLock() { section_.leave(); }
  CriticalSectionLock(const CriticalSectionLock&) = delete;
  CriticalSectionLock& operator=(const CriticalSectionLock&) = delete;

 private:
  CriticalSection& section_;
};

}  // namespace qvn
