// CpdScannerFactory: makes the scanners of the Cpd family.
#pragma once

#include "device/factories/factory.h"

namespace qvn {

class CpdScannerFactory : public Factory {
 public:
  explicit CpdScannerFactory(bool registerFactory) : Factory("CpdScanner", registerFactory) {}

  std::shared_ptr<ScannerObject> doMakeScanner(const std::string& attributes) override;
  std::unique_ptr<Device> doMakeDevice(const std::string& attributes) override;
};

}  // namespace qvn
