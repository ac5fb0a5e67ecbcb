// StateMachine: a device that does with an operation what its current state says.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>

#include "common/clients/client_call.h"
#include "common/clients/operation_lock.h"
#include "common/exception.h"
#include "common/logging/trace_scope.h"

namespace qvn {

// `Owner` is the deriving class, `State` the base of its states, which are shared objects without data. An
// owner begins in a state whose doEnterState its own constructor calls, being whole only then.
template <typename Owner, typename State>
class StateMachine {
 public:
  StateMachine(const StateMachine&) = delete;
  StateMachine& operator=(const StateMachine&) = delete;

  // The one way from state to state: stores the new one and enters it.
  void setState(const State& state) {
    const OperationLock::Turn turn(stateLock_, OperationLock::Nested::Allowed);
    state_ = &state;
    state.doEnterState(static_cast<Owner&>(*this));
  }

  // Without the state lock it may not be so for long.
  bool isIn(const State& state) const { return state_ == &state; }

 protected:
  using Nested = OperationLock::Nested;

  explicit StateMachine(const State& closed) : closed_(closed), state_(&closed) {}
  ~StateMachine() = default;

  // Runs an operation of the current state under the state lock. Inside a callback it may be refused
  // (CallbackRefusal); one that leaves the state as it is may be nested in another one.
  template <typename Operation>
  auto withState(Operation&& operation, Nested nested = Nested::Refused) {
    const OperationLock::Turn turn(stateLock_, nested);
    return operation(state());
  }

  // The same for an open. A nested one only counts, so it must not be the first.
  template <typename Operation>
  auto withStateToOpen(Operation&& operation) {
    const OperationLock::Turn turn(stateLock_, Nested::Allowed);
    refuseFirstOpen(turn);
    return operation(state());
  }
  void refuseFirstOpen(const OperationLock::Turn& turn) const {
    if (turn.isNested() && isIn(closed_)) throw CallbackRefusal("the close is not over");
  }

  // Whether there has been an operation. One without has nothing to end, and takes no lock at its end: it may
  // have been made of the text of a device that was found, inside an operation of another one.
  bool wasUsed() const { return stateLock_.wasTaken(); }

  OperationLock& stateLock() { return stateLock_; }
  // Without the state lock it may be another one at once.
  const State& state() const { return *state_; }

 private:
  const State& closed_;
  std::atomic<const State*> state_;
  OperationLock stateLock_{LockRank::DeviceState};
};

// What the lines of a traced operation say behind the handle.
inline LogText noDetails() { return {}; }
inline auto ofClient(std::uint32_t clientId) {
  return [clientId] { return LogText() << " clientId=" << clientId; };
}

// One whose operations write an entry and an exit line.
template <typename Owner, typename State>
class TracedStateMachine : public StateMachine<Owner, State> {
 protected:
  using typename StateMachine<Owner, State>::Nested;

  // The lines begin with the name.
  TracedStateMachine(const State& state, const char* className, const Component& component)
      : StateMachine<Owner, State>(state), className_(className), component_(component) {}
  ~TracedStateMachine() = default;

  // Runs an operation of the current state, as withState or withStateToOpen does, with its result in the exit
  // line, which is written before the state lock is given back: the lines stand in the order of the results.
  template <typename Details, typename Operation>
  std::uint32_t traced(const char* operation, Details&& details, Operation&& run) {
    std::optional<OperationLock::Turn> turn;
    return trace(operation, details, [&] {
      turn.emplace(this->stateLock());
      return run(this->state());
    });
  }
  template <typename Operation>
  std::uint32_t tracedOpen(Operation&& run) {
    std::optional<OperationLock::Turn> turn;
    return trace("doOpen", noDetails, [&] {
      turn.emplace(this->stateLock(), Nested::Allowed);
      this->refuseFirstOpen(*turn);
      return run(this->state());
    });
  }

  // Who is called back is changed without the state lock inside a callback, which must not wait for it:
  // nobody is refused there.
  template <typename Details, typename Operation>
  std::uint32_t tracedRegistration(const char* operation, Details&& details, Operation&& run) {
    if (!ClientCall::isRunning()) return traced(operation, details, run);
    return trace(operation, details, [&] { return run(this->state()); });
  }

  // The lines around whatever `run` does.
  template <typename Details, typename Run>
  std::uint32_t trace(const char* operation, Details&& details, Run&& run) {
    TraceScope scope(BasicLogger::getInstance(), component_, [&] {
      return LogText() << className_ << "::" << operation
                       << "() handle=" << static_cast<Owner&>(*this).getHandle() << details().str();
    });
    try {
      const std::uint32_t rc = run();
      scope.setRc(rc);
      return rc;
    } catch (const Exception& exception) {
      scope.setRc(exception.getCode());
      throw;
    }
  }

 private:
  const char* const className_;
  const Component& component_;
};

}  // namespace qvn
