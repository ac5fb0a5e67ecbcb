#include "device/store/hid_store.h"

#include "device/factories/device_factories.h"
#include "device/factories/factory.h"
#include "device/store/hid_table.h"

namespace qvn {

std::uint32_t HidStore::restore(std::uint32_t handle) {
  return restoreInto(HidTable::getInstance(), handle,
                     [](const std::string& text) { return DeviceFactories::getInstance().makeHid(text); });
}

}  // namespace qvn
