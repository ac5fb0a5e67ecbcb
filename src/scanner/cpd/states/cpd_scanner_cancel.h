// CpdScannerCancel: a scanner that was told to abort; its last status is awaited.
#pragma once

#include "qvn/transport/data.h"
#include "scanner/cpd/states/cpd_scanner_state.h"

namespace qvn {

class CpdScannerCancel final : public CpdScannerOpenedState {
 public:
  static const CpdScannerCancel& getInstance();

  std::uint32_t doCancelJob(CpdScanner& scanner, std::uint32_t clientId) const override;
  std::uint32_t doEndJob(CpdScanner& scanner) const override;
  void doEnterState(CpdScanner& scanner) const override;
  void doAccept(CpdScanner& scanner, Data& data) const override;

 private:
  CpdScannerCancel() : CpdScannerOpenedState("CpdScannerCancel") {}
};

}  // namespace qvn
