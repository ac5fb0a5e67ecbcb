// Factory: makes the devices of one family.
#pragma once

#include <memory>
#include <string>

#include "qvn/transport/device.h"

namespace qvn {

class PrinterObject;
class ScannerObject;
class HidObject;

// Each operation gives a new object with the attribute text, or null when the family is of another kind.
class Factory {
 public:
  Factory(const Factory&) = delete;
  Factory& operator=(const Factory&) = delete;
  virtual ~Factory();

  virtual std::shared_ptr<PrinterObject> doMakePrinter(const std::string& attributes);
  virtual std::shared_ptr<ScannerObject> doMakeScanner(const std::string& attributes);
  virtual std::shared_ptr<HidObject> doMakeHid(const std::string& attributes);
  virtual std::unique_ptr<Device> doMakeDevice(const std::string& attributes);

 protected:
  // `family` is the value of the Device attribute that this factory serves.
  Factory(const std::string& family, bool registerFactory);
};

}  // namespace qvn
