// StateMachine: a device that does with an operation what its current state says.
#pragma once

#include <atomic>
#include <cstdint>

#include "common/logging/trace_scope.h"
#include "qvn/result_codes.h"
#include "qvn/transport/critical_section.h"

namespace qvn {

// `Owner` is the deriving class, `State` the base of its states, which are shared objects without data. An
// owner begins in a state whose doEnterState its own constructor calls, being whole only then.
template <typename Owner, typename State>
class StateMachine {
 public:
  StateMachine(const StateMachine&) = delete;
  StateMachine& operator=(const StateMachine&) = delete;

  // The one way from state to state: stores the new one and enters it.
  void changeState(const State& state) {
    CriticalSectionLock lock(stateLock_);
    state_ = &state;
    state.doEnterState(static_cast<Owner&>(*this));
  }

  // Without the state lock it may not be so for long.
  bool isIn(const State& state) const { return state_ == &state; }

 protected:
  explicit StateMachine(const State& state) : state_(&state) {}
  ~StateMachine() = default;

  // Runs an operation of the current state under the state lock.
  template <typename Operation>
  auto withState(Operation&& operation) {
    CriticalSectionLock lock(stateLock_);
    return operation(state());
  }

  CriticalSection& stateLock() { return stateLock_; }
  // Without the state lock it may be another one at once.
  const State& state() const { return *state_; }

 private:
  std::atomic<const State*> state_;
  CriticalSection stateLock_;
};

// What the lines of a traced operation say behind the handle.
inline LogText noDetails() { return {}; }
inline auto ofClient(std::uint32_t clientId) {
  return [clientId] { return LogText() << " clientId=" << clientId; };
}

// One whose operations write an entry and an exit line.
template <typename Owner, typename State>
class TracedStateMachine : public StateMachine<Owner, State> {
 public:
  // Whether this thread must not wait for the state lock: an operation that would have to is refused with
  // 170. The owner may know better.
  static bool mustNotWait() { return false; }

 protected:
  // The lines begin with the name.
  TracedStateMachine(const State& state, const char* className, const Component& component)
      : StateMachine<Owner, State>(state), className_(className), component_(component) {}
  ~TracedStateMachine() = default;

  // Runs an operation of the current state under the state lock, with its result in the exit line.
  template <typename Details, typename Operation>
  std::uint32_t traced(const char* operation, Details&& details, Operation&& run) {
    TraceScope trace(BasicLogger::getInstance(), component_, [&] {
      return LogText() << className_ << "::" << operation
                       << "() handle=" << static_cast<Owner&>(*this).getHandle() << details().str();
    });
    std::uint32_t rc = QRN_ERROR_BUSY;
    CriticalSection& stateLock = this->stateLock();
    if (!Owner::mustNotWait()) {
      rc = this->withState(run);
    } else if (stateLock.tryEnter()) {
      const CriticalSectionLock lock(stateLock);
      stateLock.leave();
      rc = this->withState(run);
    }
    trace.setRc(rc);
    return rc;
  }

 private:
  const char* const className_;
  const Component& component_;
};

}  // namespace qvn
