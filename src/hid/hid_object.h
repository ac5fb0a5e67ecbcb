// HidObject: what the HID table holds for a handle.
#pragma once

#include "device/device_object.h"
#include "device/hid.h"

namespace qvn {

class HidObject final : public DeviceObject<Hid> {
 public:
  using DeviceObject::DeviceObject;
};

}  // namespace qvn
