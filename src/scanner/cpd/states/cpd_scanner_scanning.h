// CpdScannerScanning: a scanner whose data goes to the clients until a status ends it.
#pragma once

#include "qvn/transport/data.h"
#include "scanner/cpd/states/cpd_scanner_state.h"

namespace qvn {

class CpdScannerScanning final : public CpdScannerOpenedState {
 public:
  static const CpdScannerScanning& getInstance();

  std::uint32_t doCancelJob(CpdScanner& scanner, std::uint32_t clientId) const override;
  void doEnterState(CpdScanner& scanner) const override;
  void doAccept(CpdScanner& scanner, Data& data) const override;
  std::uint32_t doOnConnectionLost(CpdScanner& scanner) const override;

 private:
  CpdScannerScanning() : CpdScannerOpenedState("CpdScannerScanning") {}
};

}  // namespace qvn
