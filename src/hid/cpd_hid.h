// CpdHid: an input device; what it sends goes to the clients that the process's managers know.
#pragma once

#include <atomic>
#include <cstdint>

#include "device/client_registration.h"
#include "device/hid.h"
#include "device/open_connection.h"
#include "device/state_machine.h"
#include "hid/cpd_hid_state.h"
#include "qvn/transport/notification.h"

namespace qvn {

// Reports and events arrive without the state lock and in every state.
class CpdHid : public Hid, public TracedStateMachine<CpdHid, CpdHidState> {
 public:
  CpdHid();
  ~CpdHid() override;

  std::uint32_t doAccept(Notification& notification) override;
  void doAccept(Data& report) override;
  std::uint32_t doOpen() override;
  std::uint32_t doClose() override;
  std::uint32_t doOnConnectionLost() override;
  std::uint32_t doGetCurrentState(std::uint32_t& state) override;
  std::uint32_t doSetCurrentState(std::uint32_t state) override;
  std::uint32_t doRegisterForReports(const ReportRegistration& registration) override;
  std::uint32_t doUnregisterForReports(std::uint32_t clientId) override;
  void shutDown() override;

  // For the states, which are called with the state lock held.
  std::uint32_t openCount() const { return openCount_; }
  void setOpenCount(std::uint32_t count) { openCount_ = count; }
  // 0 once the "alert" connection is open, and kept until it is closed.
  std::uint32_t openAlert(const Connection& connection);
  std::uint32_t closeAlert();

 private:
  OpenConnection alert_;
  std::uint32_t openCount_ = 0;
  std::atomic<std::uint32_t> stateValue_{0};
};

}  // namespace qvn
