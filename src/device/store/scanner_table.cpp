#include "device/store/scanner_table.h"

#include "device/store/scanner_store.h"

namespace qvn {

std::uint32_t ScannerTable::restore(std::uint32_t handle) {
  return ScannerStore::getInstance().restore(handle);
}

}  // namespace qvn
