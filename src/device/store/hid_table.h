// HidTable: the HID devices that are live in this process.
#pragma once

#include "common/process_service.h"
#include "device/store/handle_table.h"

namespace qvn {

class HidObject;

class HidTable final : public HandleTable<HidObject>, public ProcessService<HidTable> {
 protected:
  std::uint32_t restore(std::uint32_t handle) override;

 private:
  friend class ProcessService<HidTable>;
  HidTable() = default;
  ~HidTable() = default;
};

}  // namespace qvn
