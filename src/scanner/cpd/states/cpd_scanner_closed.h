// CpdScannerClosed: a scanner that nobody has open.
#pragma once

#include "scanner/cpd/states/cpd_scanner_state.h"

namespace qvn {

class CpdScannerClosed final : public CpdScannerState {
 public:
  static const CpdScannerClosed& getInstance();

  std::uint32_t doOpen(CpdScanner& scanner) const override;
  void doEnterState(CpdScanner& scanner) const override;

 private:
  CpdScannerClosed() : CpdScannerState("CpdScannerClosed") {}
};

}  // namespace qvn
