// CpdHidOpen: a HID whose connection brings reports and events.
#pragma once

#include "device/client_registration.h"
#include "hid/cpd_hid_state.h"

namespace qvn {

class CpdHidOpen final : public CpdHidState {
 public:
  static const CpdHidOpen& getInstance();

  std::uint32_t doOpen(CpdHid& hid) const override;
  std::uint32_t doClose(CpdHid& hid) const override;
  std::uint32_t doRegisterForReports(CpdHid& hid, const ReportRegistration& registration) const override;
  std::uint32_t doUnregisterForReports(CpdHid& hid, std::uint32_t clientId) const override;

 private:
  CpdHidOpen() : CpdHidState("open") {}
};

}  // namespace qvn
