// CpdHidFactory: makes the HIDs of the Cpd family.
#pragma once

#include "common/process_service.h"
#include "device/factories/factory.h"
#include "qvn/transport/device.h"

namespace qvn {

class CpdHidFactory : public Factory, public ProcessService<CpdHidFactory> {
 public:
  std::shared_ptr<HidObject> doMakeHid(const std::string& attributes) override;
  std::unique_ptr<Device> doMakeDevice(const std::string& attributes) override;

 private:
  friend class ProcessService<CpdHidFactory>;
  CpdHidFactory() : Factory("CpdHid", true) {}
  ~CpdHidFactory() override = default;
};

}  // namespace qvn
