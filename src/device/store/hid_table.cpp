#include "device/store/hid_table.h"

#include "device/store/hid_store.h"

namespace qvn {

std::uint32_t HidTable::restore(std::uint32_t handle) { return HidStore::getInstance().restore(handle); }

}  // namespace qvn
