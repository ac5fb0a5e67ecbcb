#include "device/store/printer_table.h"

#include "device/store/printer_store.h"

namespace qvn {

std::uint32_t PrinterTable::restore(std::uint32_t handle) {
  return PrinterStore::getInstance().restore(handle);
}

}  // namespace qvn
