#include "scanner/cpd/cpd_scanner_factory.h"

#include "common/logging/basic_logger.h"
#include "scanner/cpd/cpd_scanner.h"
#include "scanner/scanner_object.h"

namespace qvn {

std::shared_ptr<ScannerObject> CpdScannerFactory::doMakeScanner(const std::string& attributes) {
  logDetail(log_component::server(),
            [&] { return LogText() << "CpdScannerFactory::doMakeScanner() " << attributes; });
  return std::make_shared<ScannerObject>(std::make_unique<CpdScanner>(), attributes);
}

std::unique_ptr<Device> CpdScannerFactory::doMakeDevice(const std::string& attributes) {
  logDetail(log_component::server(),
            [&] { return LogText() << "CpdScannerFactory::doMakeDevice() " << attributes; });
  auto scanner = std::make_unique<CpdScanner>();
  scanner->setAttributes(attributes);
  return scanner;
}

}  // namespace qvn
