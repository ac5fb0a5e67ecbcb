#include "device/factories/factory.h"

#include "device/factories/device_factories.h"

namespace qvn {

Factory::Factory(const std::string& family, bool registerFactory) {
  if (registerFactory) DeviceFactories::getInstance().registerFactory(family, *this);
}

Factory::~Factory() = default;

std::shared_ptr<PrinterObject> Factory::doMakePrinter(const std::string& /*attributes*/) { return nullptr; }
std::shared_ptr<ScannerObject> Factory::doMakeScanner(const std::string& /*attributes*/) { return nullptr; }
std::shared_ptr<HidObject> Factory::doMakeHid(const std::string& /*attributes*/) { return nullptr; }
std::unique_ptr<Device> Factory::doMakeDevice(const std::string& /*attributes*/) { return nullptr; }

}  // namespace qvn
