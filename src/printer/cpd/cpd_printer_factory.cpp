#include "printer/cpd/cpd_printer_factory.h"

#include "common/logging/basic_logger.h"
#include "printer/cpd/cpd_printer.h"
#include "printer/printer_object.h"

namespace qvn {

std::shared_ptr<PrinterObject> CpdPrinterFactory::doMakePrinter(const std::string& attributes) {
  logDetail(log_component::server(),
            [&] { return LogText() << "CpdPrinterFactory::doMakePrinter() " << attributes; });
  return std::make_shared<PrinterObject>(std::make_unique<CpdPrinter>(), attributes);
}

std::unique_ptr<Device> CpdPrinterFactory::doMakeDevice(const std::string& attributes) {
  logDetail(log_component::server(),
            [&] { return LogText() << "CpdPrinterFactory::doMakeDevice() " << attributes; });
  auto printer = std::make_unique<CpdPrinter>();
  printer->setAttributes(attributes);
  return printer;
}

}  // namespace qvn
