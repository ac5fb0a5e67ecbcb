// BpdScannerScanning: a job was started and has not been ended, whether it runs or its start failed.
#pragma once

#include "scanner/bpd/states/bpd_scanner_state.h"

namespace qvn {

class BpdScannerScanning final : public BpdScannerOpenedState {
 public:
  static const BpdScannerScanning& getInstance();

  std::uint32_t doStartJob(BpdScanner& scanner, std::uint32_t clientId, void* parameters) const override;
  std::uint32_t doEndJob(BpdScanner& scanner, std::uint32_t clientId) const override;

 private:
  BpdScannerScanning() = default;
};

}  // namespace qvn
