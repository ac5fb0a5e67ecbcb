// BpdPrinterFactory: makes the printers of the Bpd family.
#pragma once

#include <utility>

#include "device/factories/factory.h"
#include "printer/bpd/bpd_printer.h"

namespace qvn {

class BpdPrinterFactory : public Factory {
 public:
  BpdPrinterFactory(bool registerFactory, BpdPrinter::Verify verify)
      : Factory("BpdPrinter", registerFactory), verify_(std::move(verify)) {}

  std::shared_ptr<PrinterObject> doMakePrinter(const std::string& attributes) override;
  std::unique_ptr<Device> doMakeDevice(const std::string& attributes) override;

 private:
  const BpdPrinter::Verify verify_;
};

}  // namespace qvn
