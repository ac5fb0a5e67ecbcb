// CpdScannerOpen: a scanner that is open and does not scan: commands are exchanged.
#pragma once

#include "qvn/transport/data.h"
#include "scanner/cpd/states/cpd_scanner_state.h"

namespace qvn {

class CpdScannerOpen final : public CpdScannerOpenedState {
 public:
  static const CpdScannerOpen& getInstance();

  std::uint32_t doStartJob(CpdScanner& scanner, std::uint32_t clientId, void* parameters) const override;
  std::uint32_t doExchangeData(CpdScanner& scanner, std::uint32_t clientId, Data& command,
                               Data& response) const override;
  std::uint32_t doExchangeData(CpdScanner& scanner, std::uint32_t clientId, Data& data) const override;
  void doEnterState(CpdScanner& scanner) const override;
  void doAccept(CpdScanner& scanner, Data& data) const override;

 private:
  CpdScannerOpen() : CpdScannerOpenedState("CpdScannerOpen") {}
};

}  // namespace qvn
