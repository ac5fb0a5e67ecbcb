// BpdScannerOpen: a scanner that is open and has no job: parameters are set, and a job is started.
#pragma once

#include "qvn/transport/data.h"
#include "scanner/bpd/states/bpd_scanner_state.h"

namespace qvn {

class BpdScannerOpen final : public BpdScannerOpenedState {
 public:
  static const BpdScannerOpen& getInstance();

  using BpdScannerOpenedState::doExchangeData;
  std::uint32_t doStartJob(BpdScanner& scanner, std::uint32_t clientId, void* parameters) const override;
  std::uint32_t doExchangeData(BpdScanner& scanner, std::uint32_t clientId, Data& data) const override;

  // Starts the job, on the thread that the scanner has for it and without the state lock: 0, or why it could
  // not be started. Clients learn that by an alert.
  std::uint32_t runMethod(BpdScanner& scanner) const;

 private:
  BpdScannerOpen() = default;
};

}  // namespace qvn
