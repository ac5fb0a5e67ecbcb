// HidStore: the HID devices in the PersistenceStore.
#pragma once

#include "common/process_service.h"
#include "device/store/device_store.h"

namespace qvn {

class HidStore : public DeviceStore, public ProcessService<HidStore> {
 public:
  // Puts the stored device's object into the HidTable: 1168 nothing is stored, 6 no factory makes it.
  std::uint32_t restore(std::uint32_t handle);

 private:
  friend class ProcessService<HidStore>;
  HidStore() : DeviceStore("HidStore") {}
  ~HidStore() = default;
};

}  // namespace qvn
