#include "hid/cpd_hid_factory.h"

#include "common/logging/basic_logger.h"
#include "hid/cpd_hid.h"
#include "hid/hid_object.h"

namespace qvn {

std::shared_ptr<HidObject> CpdHidFactory::doMakeHid(const std::string& attributes) {
  logDetail(log_component::server(),
            [&] { return LogText() << "CpdHidFactory::doMakeHid() " << attributes; });
  return std::make_shared<HidObject>(std::make_unique<CpdHid>(), attributes);
}

std::unique_ptr<Device> CpdHidFactory::doMakeDevice(const std::string& attributes) {
  logDetail(log_component::server(),
            [&] { return LogText() << "CpdHidFactory::doMakeDevice() " << attributes; });
  auto hid = std::make_unique<CpdHid>();
  hid->setAttributes(attributes);
  return hid;
}

}  // namespace qvn
