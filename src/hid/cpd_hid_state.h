// CpdHidState: what a Cpd HID does with an operation while it is in a state.
//
//                        Closed             Open
//   open                 -> Open            once more, when the transport agrees
//   close                0                  count; the last one -> Closed
//   registerForReports   1                  0
//   unregister           1                  0
#pragma once

#include <cstdint>

#include "device/client_registration.h"

namespace qvn {

class CpdHid;

// One object per class, shared by all HIDs and without data but its name. Called with the HID's state lock
// held.
class CpdHidState {
 public:
  CpdHidState(const CpdHidState&) = delete;
  CpdHidState& operator=(const CpdHidState&) = delete;
  virtual ~CpdHidState();

  virtual void doEnterState(CpdHid& hid) const;
  virtual std::uint32_t doOpen(CpdHid& hid) const = 0;
  virtual std::uint32_t doClose(CpdHid& hid) const = 0;
  virtual std::uint32_t doRegisterForReports(CpdHid& hid, const ReportRegistration& registration) const;
  virtual std::uint32_t doUnregisterForReports(CpdHid& hid, std::uint32_t clientId) const;

 protected:
  explicit CpdHidState(const char* name = "state") : name_(name) {}

 private:
  const char* const name_;
};

}  // namespace qvn
