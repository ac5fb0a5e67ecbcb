#include "device/store/scanner_store.h"

#include "device/factories/device_factories.h"
#include "device/factories/factory.h"
#include "device/store/scanner_table.h"

namespace qvn {

std::uint32_t ScannerStore::restore(std::uint32_t handle) {
  return restoreInto(ScannerTable::getInstance(), handle, [](const std::string& text) {
    return DeviceFactories::getInstance().makeScanner(text);
  });
}

}  // namespace qvn
