// ScannerStore: the scanners in the PersistenceStore.
#pragma once

#include "common/process_service.h"
#include "device/store/device_store.h"

namespace qvn {

class ScannerStore : public DeviceStore, public ProcessService<ScannerStore> {
 public:
  // Writes a text that a transport reported: nothing of what is stored wins over it.
  std::uint32_t update(const std::string& text) { return persist(text); }

  // Puts the stored device's object into the ScannerTable: 1168 nothing is stored, 6 no factory makes it.
  std::uint32_t restore(std::uint32_t handle);

 private:
  friend class ProcessService<ScannerStore>;
  ScannerStore() : DeviceStore("ScannerStore") {}
  ~ScannerStore() = default;
};

}  // namespace qvn
