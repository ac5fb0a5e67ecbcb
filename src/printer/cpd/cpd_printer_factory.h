// CpdPrinterFactory: makes the printers of the Cpd family.
#pragma once

#include "device/factories/factory.h"

namespace qvn {

class CpdPrinterFactory : public Factory {
 public:
  explicit CpdPrinterFactory(bool registerFactory) : Factory("CpdPrinter", registerFactory) {}

  std::shared_ptr<PrinterObject> doMakePrinter(const std::string& attributes) override;
  std::unique_ptr<Device> doMakeDevice(const std::string& attributes) override;
};

}  // namespace qvn
