#include "scanner/bpd/bpd_scanner_factory.h"

#include "common/logging/basic_logger.h"
#include "scanner/bpd/bpd_scanner.h"
#include "scanner/scanner_object.h"

namespace qvn {

std::shared_ptr<ScannerObject> BpdScannerFactory::doMakeScanner(const std::string& attributes) {
  logDetail(log_component::server(),
            [&] { return LogText() << "BpdScannerFactory::doMakeScanner() " << attributes; });
  return std::make_shared<ScannerObject>(std::make_unique<BpdScanner>(), attributes);
}

std::unique_ptr<Device> BpdScannerFactory::doMakeDevice(const std::string& attributes) {
  logDetail(log_component::server(),
            [&] { return LogText() << "BpdScannerFactory::doMakeDevice() " << attributes; });
  auto scanner = std::make_unique<BpdScanner>();
  scanner->setAttributes(attributes);
  return scanner;
}

}  // namespace qvn
