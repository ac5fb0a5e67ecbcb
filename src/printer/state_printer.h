// StatePrinter: a printer that does with an operation what its current state says.
#pragma once

#include <cstdint>
#include <optional>

#include "common/clients/operation_lock.h"
#include "common/logging/basic_logger.h"
#include "device/state_machine.h"
#include "printer/job_printer.h"
#include "qvn/result_codes.h"

namespace qvn {

// `Family` is the deriving class, `State` the base of its states. A printer begins in a state whose
// doEnterState its own constructor calls, being whole only then.
template <typename Family, typename State>
class StatePrinter : public JobPrinter, public StateMachine<Family, State> {
  using Machine = StateMachine<Family, State>;

 public:
  std::uint32_t doOpen() override {
    return this->withStateToOpen([this](const State& state) { return state.doOpen(self()); });
  }
  std::uint32_t doClose() override {
    const std::uint32_t rc = this->withState([this](const State& state) { return state.doClose(self()); });
    // The last close has ended the registrations for alerts.
    if (PrinterAlertTask* const task = this->alertTask()) task->waitForCalls(0);
    return rc;
  }
  std::uint32_t doCancelPrint() override {
    return this->withState([this](const State& state) { return state.doCancelPrint(self()); });
  }
  std::uint32_t doRegisterForAlerts(const AlertRegistration& registration) override {
    return this->withState([&](const State&) { return JobPrinter::doRegisterForAlerts(registration); },
                           Nested::Allowed);
  }
  // Inside a callback it never fails: when the printer is at work it is told later.
  std::uint32_t doUnregisterForAlerts(std::uint32_t clientId) override {
    std::uint32_t rc = QRN_ERROR_SUCCESS;
    {
      std::optional<OperationLock::Turn> turn;
      try {
        turn.emplace(this->stateLock(), Nested::Allowed);
      } catch (const CallbackRefusal&) {
      }
      rc = JobPrinter::doUnregisterForAlerts(clientId);
    }
    if (PrinterAlertTask* const task = this->alertTask()) task->waitForCalls(clientId);
    return rc;
  }
  // Does not wait for an operation: the state is what it is.
  std::uint32_t doGetCurrentState(std::uint32_t& code) override {
    code = this->state().stateCode();
    logDetail(log_component::server(), [&] {
      return LogText() << "doGetCurrentState()"
                       << "ERROR_SUCCESS, state=" << code;
    });
    return QRN_ERROR_SUCCESS;
  }
  void shutDown() override {
    this->endReferences();
    endRegistrations();
    if (!this->wasUsed()) return;
    this->withState([this](const State&) { return isConnected() ? closeConnections() : QRN_ERROR_SUCCESS; });
  }

 protected:
  using typename Machine::Nested;

  StatePrinter(const char* family, const State& state) : JobPrinter(family), Machine(state) {}

 private:
  Family& self() { return static_cast<Family&>(*this); }
};

}  // namespace qvn
