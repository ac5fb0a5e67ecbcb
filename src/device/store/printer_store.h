// PrinterStore: the printers in the PersistenceStore.
#pragma once

#include "common/process_service.h"
#include "device/store/device_store.h"

namespace qvn {

class PrinterStore : public DeviceStore, public ProcessService<PrinterStore> {
 public:
  // Writes a text that a transport reported: the stored port name and a stored true end of job above 0 win
  // over the transport's.
  std::uint32_t update(const std::string& text);

  // Puts the stored printer's object into the PrinterTable: 1168 nothing is stored, 6 no factory makes it.
  std::uint32_t restore(std::uint32_t handle);

 private:
  friend class ProcessService<PrinterStore>;
  PrinterStore() : DeviceStore("PrinterStore") {}
  ~PrinterStore() = default;
};

}  // namespace qvn
