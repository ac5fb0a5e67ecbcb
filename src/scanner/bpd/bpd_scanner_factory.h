// BpdScannerFactory: makes the scanners of the Bpd family.
#pragma once

#include "common/process_service.h"
#include "device/factories/factory.h"
#include "qvn/transport/device.h"

namespace qvn {

class BpdScannerFactory : public Factory, public ProcessService<BpdScannerFactory> {
 public:
  std::shared_ptr<ScannerObject> doMakeScanner(const std::string& attributes) override;
  std::unique_ptr<Device> doMakeDevice(const std::string& attributes) override;

 private:
  friend class ProcessService<BpdScannerFactory>;
  BpdScannerFactory() : Factory("BpdScanner", true) {}
  ~BpdScannerFactory() override = default;
};

}  // namespace qvn
