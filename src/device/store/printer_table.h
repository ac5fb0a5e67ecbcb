// PrinterTable: the printers that are live in this process.
#pragma once

#include "common/process_service.h"
#include "device/store/handle_table.h"

namespace qvn {

class PrinterObject;

class PrinterTable final : public HandleTable<PrinterObject>, public ProcessService<PrinterTable> {
 protected:
  std::uint32_t restore(std::uint32_t handle) override;

 private:
  friend class ProcessService<PrinterTable>;
  PrinterTable() = default;
  ~PrinterTable() = default;
};

}  // namespace qvn
