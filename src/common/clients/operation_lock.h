// OperationLock: a lock that is held for a whole operation, while plug-ins and clients are called.
#pragma once

#include <atomic>
#include <cstdint>
#include <thread>

#include "common/exception.h"
#include "qvn/transport/critical_section.h"

namespace qvn {

// What is asked for inside a callback and cannot be done there. Nothing has been changed; the client is
// answered 170.
class CallbackRefusal : public Win32Exception {
 public:
  explicit CallbackRefusal(const char* what);
};

// Throws CallbackRefusal inside a client's callback.
void refuseInCallback(const char* what);

// Runs a step of something that goes on whatever the step comes to: its result, or the code of what it
// throws. Only a refusal passes, which has changed nothing.
template <typename Step>
std::uint32_t resultOf(Step&& step) {
  try {
    return step();
  } catch (const CallbackRefusal&) {
    throw;
  } catch (...) {
    return codeOfCurrentException();
  }
}

// The locks in the order in which one thread takes them: of those that it holds, each new one comes later, or
// is of the same rank and taken inside a callback. Checked where assertions are.
enum class LockRank {
  None,
  Watchdog,        // a scan job's watchdog thread is made or waited for
  DeviceState,     // a device's state, for a whole operation
  Notify,          // what a Bpd scanner tells is passed on to its clients, one piece after the other
  BackgroundSend,  // a Bpd scanner's send that nobody waits for is made or ended
  Configuration,   // a printer's attribute is changed, and the transport told
  Modules,         // transport modules are loaded or unloaded
};

class OperationLock {
 public:
  explicit OperationLock(LockRank rank) : rank_(rank) {}
  OperationLock(const OperationLock&) = delete;
  OperationLock& operator=(const OperationLock&) = delete;

  // Whether an operation may run inside another one of this lock that called the client which asks for it.
  enum class Nested { Refused, Allowed };

  // Whether the calling thread holds it.
  bool isHeldHere() const { return holder_ == std::this_thread::get_id(); }

  // Whether anybody has ever taken it.
  bool wasTaken() const { return wasTaken_; }

  // The lock held for a scope. Outside callbacks it is waited for; the holding thread may take it again.
  // Inside a callback it is refused (CallbackRefusal) when another thread holds it, and a nested operation
  // is.
  class [[nodiscard]] Turn {
   public:
    explicit Turn(OperationLock& lock, Nested nested = Nested::Refused);
    ~Turn();
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

    // Whether it is inside another one of this thread.
    bool isNested() const { return lock_.depth_ > 1; }

   private:
    OperationLock& lock_;
    LockRank outer_;  // of the calling thread until then
  };

 private:
  const LockRank rank_;
  CriticalSection section_;
  std::atomic<std::thread::id> holder_{};
  std::atomic<bool> wasTaken_{false};
  int depth_ = 0;  // how often the holder has taken it
};

}  // namespace qvn
