// HidReportManager: the clients that want the reports of the HIDs, by HID.
#pragma once

#include <cstdint>

#include "common/clients/callback_registry.h"
#include "common/process_service.h"
#include "device/client_registration.h"
#include "qvn/transport/data.h"

namespace qvn {

class HidReportManager : public ProcessService<HidReportManager> {
 public:
  // A client that is registered for the HID stays as it is. Always 0.
  std::uint32_t registerForReports(std::uint32_t handle, const ReportRegistration& registration);
  // Always 0. Returns when the client is in no callback any more, unless called from one.
  std::uint32_t unregisterForReports(std::uint32_t handle, std::uint32_t clientId);

  // Calls the HID's clients in the order of their registration, on this thread, without a lock held: all
  // but for an empty report and for the null report. A client whose callback throws is registered no
  // more.
  void accept(std::uint32_t handle, Data& report);

 private:
  friend class ProcessService<HidReportManager>;
  HidReportManager() = default;
  ~HidReportManager() = default;

  CallbackRegistry<ReportRegistration> registrations_{
      {.order = CallbackRules::Order::AsAdded, .throwingIsRemoved = true}};
};

}  // namespace qvn
