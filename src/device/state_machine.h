// StateMachine: a device that does with an operation what its current state says.
#pragma once

#include <atomic>

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

}  // namespace qvn
