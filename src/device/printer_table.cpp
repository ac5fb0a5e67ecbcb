#include "device/printer_table.h"

#include "device/printer_store.h"

namespace qvn {

std::uint32_t PrinterTable::restore(std::uint32_t handle) {
  return PrinterStore::getInstance().restore(handle);
}

}  // namespace qvn
