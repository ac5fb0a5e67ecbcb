// CpdScannerEndJobPending: a scanner that has sent all; its client has not ended the job yet.
#pragma once

#include "scanner/cpd/states/cpd_scanner_state.h"

namespace qvn {

class CpdScannerEndJobPending final : public CpdScannerOpenedState {
 public:
  static const CpdScannerEndJobPending& getInstance();

  std::uint32_t doCancelJob(CpdScanner& scanner, std::uint32_t clientId) const override;
  std::uint32_t doEndJob(CpdScanner& scanner) const override;
  void doEnterState(CpdScanner& scanner) const override;

 private:
  CpdScannerEndJobPending() : CpdScannerOpenedState("CpdScannerEndJobPending") {}
};

}  // namespace qvn
