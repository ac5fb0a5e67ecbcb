// StatePrinter: a printer that does with an operation what its current state says.
#pragma once

#include <cstdint>

#include "common/logging/basic_logger.h"
#include "device/state_machine.h"
#include "printer/job_printer.h"

namespace qvn {

// `Family` is the deriving class, `State` the base of its states. A printer begins in a state whose
// doEnterState its own constructor calls, being whole only then.
template <typename Family, typename State>
class StatePrinter : public JobPrinter, public StateMachine<Family, State> {
  using Machine = StateMachine<Family, State>;

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
    CriticalSectionLock lock(this->stateLock());
    code = this->state().stateCode();
    logDetail(log_component::server(), [&] {
      return LogText() << "doGetCurrentState()"
                       << "ERROR_SUCCESS, state=" << code;
    });
    return QRN_ERROR_SUCCESS;
  }

 protected:
  StatePrinter(const char* family, const State& state) : JobPrinter(family), Machine(state) {}

  // Runs an operation of the current state under the state lock; 170 from inside a notification.
  template <typename Operation>
  std::uint32_t withState(Operation&& operation) {
    if (isReportingHere()) return QRN_ERROR_BUSY;
    return Machine::withState(operation);
  }

 private:
  Family& self() { return static_cast<Family&>(*this); }
};

}  // namespace qvn
