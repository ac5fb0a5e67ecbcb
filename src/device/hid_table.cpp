#include "device/hid_table.h"

#include "device/hid_store.h"

namespace qvn {

std::uint32_t HidTable::restore(std::uint32_t handle) { return HidStore::getInstance().restore(handle); }

}  // namespace qvn
