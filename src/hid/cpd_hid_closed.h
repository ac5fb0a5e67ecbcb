// CpdHidClosed: a HID that nobody has open.
#pragma once

#include "hid/cpd_hid_state.h"

namespace qvn {

class CpdHidClosed final : public CpdHidState {
 public:
  static const CpdHidClosed& getInstance();

  std::uint32_t doOpen(CpdHid& hid) const override;
  std::uint32_t doClose(CpdHid& hid) const override;

 private:
  CpdHidClosed() : CpdHidState("closed") {}
};

}  // namespace qvn
