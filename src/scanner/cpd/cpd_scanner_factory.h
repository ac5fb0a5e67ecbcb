// CpdScannerFactory: makes the scanners of the Cpd family.
#pragma once

#include "common/process_service.h"
#include "device/factories/factory.h"
#include "qvn/transport/device.h"

namespace qvn {

class CpdScannerFactory : public Factory, public ProcessService<CpdScannerFactory> {
 public:
  std::shared_ptr<ScannerObject> doMakeScanner(const std::string& attributes) override;
  std::unique_ptr<Device> doMakeDevice(const std::string& attributes) override;

 private:
  friend class ProcessService<CpdScannerFactory>;
  CpdScannerFactory() : Factory("CpdScanner", true) {}
  ~CpdScannerFactory() override = default;
};

}  // namespace qvn
