// CpdHidFactory: makes the HIDs of the Cpd family.
#pragma once

#include "device/factories/factory.h"

namespace qvn {

class CpdHidFactory : public Factory {
 public:
  explicit CpdHidFactory(bool registerFactory) : Factory("CpdHid", registerFactory) {}

  std::shared_ptr<HidObject> doMakeHid(const std::string& attributes) override;
  std::unique_ptr<Device> doMakeDevice(const std::string& attributes) override;
};

}  // namespace qvn
