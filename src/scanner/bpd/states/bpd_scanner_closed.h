// BpdScannerClosed: a scanner without a connection.
#pragma once

#include "scanner/bpd/states/bpd_scanner_state.h"

namespace qvn {

class BpdScannerClosed final : public BpdScannerState {
 public:
  static const BpdScannerClosed& getInstance();

  std::uint32_t doOpen(BpdScanner& scanner) const override;
  std::uint32_t doClose(BpdScanner& scanner) const override;

 private:
  BpdScannerClosed() = default;
};

}  // namespace qvn
