// ScannerTable: the scanners that are live in this process.
#pragma once

#include "common/process_service.h"
#include "device/store/handle_table.h"

namespace qvn {

class ScannerObject;

class ScannerTable final : public HandleTable<ScannerObject>, public ProcessService<ScannerTable> {
 protected:
  std::uint32_t restore(std::uint32_t handle) override;

 private:
  friend class ProcessService<ScannerTable>;
  ScannerTable() = default;
  ~ScannerTable() = default;
};

}  // namespace qvn
