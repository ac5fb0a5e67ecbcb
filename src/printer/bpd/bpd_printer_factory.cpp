#include "printer/bpd/bpd_printer_factory.h"

#include "common/logging/basic_logger.h"
#include "printer/printer_object.h"

namespace qvn {

std::shared_ptr<PrinterObject> BpdPrinterFactory::doMakePrinter(const std::string& attributes) {
  logDetail(log_component::server(),
            [&] { return LogText() << "BpdPrinterFactory::doMakePrinter() " << attributes; });
  return std::make_shared<PrinterObject>(std::make_unique<BpdPrinter>(verify_), attributes);
}

std::unique_ptr<Device> BpdPrinterFactory::doMakeDevice(const std::string& attributes) {
  logDetail(log_component::server(),
            [&] { return LogText() << "BpdPrinterFactory::doMakeDevice() " << attributes; });
  auto printer = std::make_unique<BpdPrinter>(verify_);
  printer->setAttributes(attributes);
  return printer;
}

}  // namespace qvn
