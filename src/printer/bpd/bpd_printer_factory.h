// BpdPrinterFactory: makes the printers of the Bpd family.
#pragma once

#include <utility>

#include "common/process_service.h"
#include "device/factories/factory.h"
#include "printer/bpd/bpd_printer.h"
#include "qvn/transport/device.h"

namespace qvn {

class BpdPrinterFactory : public Factory, public ProcessService<BpdPrinterFactory> {
 public:
  // How a printer has itself looked for before it opens unverified; set before the first one is made.
  void setVerify(BpdPrinter::Verify verify) { verify_ = std::move(verify); }

  std::shared_ptr<PrinterObject> doMakePrinter(const std::string& attributes) override;
  std::unique_ptr<Device> doMakeDevice(const std::string& attributes) override;

 private:
  friend class ProcessService<BpdPrinterFactory>;
  BpdPrinterFactory() : Factory("BpdPrinter", true) {}
  ~BpdPrinterFactory() override = default;

  BpdPrinter::Verify verify_;
};

}  // namespace qvn
