// StatePrinter: a printer that does with an operation what its current state says.
#pragma once

#include <cstdint>

#include "common/basic_logger.h"
#include "printer/job_printer.h"

namespace qvn {

// `Family` is the deriving class, `State` the base of its states. A printer begins in a state whose
// doEnterState its own constructor calls, being whole only then.
template <typename Family, typename State>
class StatePrinter : public JobPrinter {
 public:
  std::uint32_t doOpen() override {
    return withState([this](const State& state) { return state.doOpen(self()); });
  }
  std::uint32_t doClose() override {
    return withState([this](const State& state) { return state.doClose(self()); });
  }
  std::uint32_t doCancelPrint() override {
    return withState([this](const State& state) { return state.doCancelPrint(self()); });
  }
  // Also from inside a notification, whose operation has the state lock.
  std::uint32_t doGetCurrentState(std::uint32_t& code) override {
    CriticalSectionLock lock(stateLock_);
    code = state_->stateCode();
    logDetail(log_component::server(), [&] {
      return LogText() << "doGetCurrentState()"
                       << "ERROR_SUCCESS, state=" << code;
    });
    return QRN_ERROR_SUCCESS;
  }

  // The one way from state to state: stores the new one and enters it.
  void changeState(const State& state) {
    CriticalSectionLock lock(stateLock_);
    state_ = &state;
    state_->doEnterState(self());
  }

 protected:
  StatePrinter(const char* family, const State& state) : JobPrinter(family), state_(&state) {}

  // Runs an operation of the current state under the state lock; 170 from inside a notification.
  template <typename Operation>
  std::uint32_t withState(Operation&& operation) {
    if (isReportingHere()) return QRN_ERROR_BUSY;
    CriticalSectionLock lock(stateLock_);
    return operation(*state_);
  }

  CriticalSection& stateLock() { return stateLock_; }
  // With the state lock held.
  const State& state() const { return *state_; }

 private:
  Family& self() { return static_cast<Family&>(*this); }

  const State* state_;
  CriticalSection stateLock_;
};

}  // namespace qvn
