// DeviceFactories: the factories by the family that an attribute text names.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "common/process_service.h"
#include "device/factories/factory.h"
#include "qvn/transport/critical_section.h"
#include "qvn/transport/device.h"

namespace qvn {

class DeviceFactories : public ProcessService<DeviceFactories> {
 public:
  // Replaces the factory that the family has. The factory stays its owner's and outlives this.
  void registerFactory(const std::string& family, Factory& factory);

  // Null when no factory serves the family, or it is of another kind.
  std::unique_ptr<Device> makeDevice(const std::string& attributes);
  std::shared_ptr<PrinterObject> makePrinter(const std::string& attributes);
  std::shared_ptr<ScannerObject> makeScanner(const std::string& attributes);
  std::shared_ptr<HidObject> makeHid(const std::string& attributes);

 private:
  friend class ProcessService<DeviceFactories>;
  DeviceFactories() = default;
  ~DeviceFactories() = default;

  Factory* find(const std::string& attributes);

  std::map<std::string, Factory*> factories_;
  CriticalSection lock_;
};

}  // namespace qvn
