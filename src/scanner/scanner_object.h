// ScannerObject: what the scanner table holds for a handle.
#pragma once

#include "device/device_object.h"
#include "device/scanner.h"

namespace qvn {

class ScannerObject final : public DeviceObject<Scanner> {
 public:
  using DeviceObject::DeviceObject;
};

}  // namespace qvn
