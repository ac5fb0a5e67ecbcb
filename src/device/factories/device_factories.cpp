#include "device/factories/device_factories.h"

#include "common/logging/basic_logger.h"
#include "qvn/result_codes.h"
#include "qvn/transport/attribute_codec.h"
#include "qvn/transport/attributes.h"

namespace qvn {

void DeviceFactories::registerFactory(const std::string& family, Factory& factory) {
  CriticalSectionLock lock(lock_);
  factories_[family] = &factory;
}

Factory* DeviceFactories::find(const std::string& attributes) {
  std::string family;
  if (AttributeCodec::getString(attributes, attribute::kDevice, family) != QRN_ERROR_SUCCESS) return nullptr;
  CriticalSectionLock lock(lock_);
  const auto found = factories_.find(family);
  return found == factories_.end() ? nullptr : found->second;
}

std::unique_ptr<Device> DeviceFactories::makeDevice(const std::string& attributes) {
  Factory* const factory = find(attributes);
  if (factory != nullptr) return factory->doMakeDevice(attributes);
  logDetail(log_component::server(),
            [&] { return LogText() << "DeviceFactories unable to make device: " << attributes; });
  return nullptr;
}

std::shared_ptr<PrinterObject> DeviceFactories::makePrinter(const std::string& attributes) {
  Factory* const factory = find(attributes);
  return factory == nullptr ? nullptr : factory->doMakePrinter(attributes);
}

std::shared_ptr<ScannerObject> DeviceFactories::makeScanner(const std::string& attributes) {
  Factory* const factory = find(attributes);
  return factory == nullptr ? nullptr : factory->doMakeScanner(attributes);
}

std::shared_ptr<HidObject> DeviceFactories::makeHid(const std::string& attributes) {
  Factory* const factory = find(attributes);
  return factory == nullptr ? nullptr : factory->doMakeHid(attributes);
}

}  // namespace qvn
