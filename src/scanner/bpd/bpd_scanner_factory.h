// BpdScannerFactory: makes the scanners of the Bpd family.
#pragma once

#include "device/factories/factory.h"

namespace qvn {

class BpdScannerFactory : public Factory {
 public:
  explicit BpdScannerFactory(bool registerFactory) : Factory("BpdScanner", registerFactory) {}

  std::shared_ptr<ScannerObject> doMakeScanner(const std::string& attributes) override;
  std::unique_ptr<Device> doMakeDevice(const std::string& attributes) override;
};

}  // namespace qvn
