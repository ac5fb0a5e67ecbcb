// CpdPrinterFactory: makes the printers of the Cpd family.
#pragma once

#include "common/process_service.h"
#include "device/factories/factory.h"
#include "qvn/transport/device.h"

namespace qvn {

class CpdPrinterFactory : public Factory, public ProcessService<CpdPrinterFactory> {
 public:
  std::shared_ptr<PrinterObject> doMakePrinter(const std::string& attributes) override;
  std::unique_ptr<Device> doMakeDevice(const std::string& attributes) override;

 private:
  friend class ProcessService<CpdPrinterFactory>;
  CpdPrinterFactory() : Factory("CpdPrinter", true) {}
  ~CpdPrinterFactory() override = default;
};

}  // namespace qvn
