// Drivers of the system that have an interface: usblp a printer's, usbhid a HID's.
#pragma once

#include <cstdint>
#include <string>

#include "platform/base/unique_descriptor.h"

namespace qvn::usb1 {

// Finds out whether somebody uses the interface through its driver's node. `sysfs` is the interface's folder,
// "/sys/bus/usb/devices/1-4:1.0". Where a node can be had by one only, `held` keeps others from it meanwhile.
// Of nodes that many may have, what processes of other users have is seen by root only.
bool isInUse(const std::string& sysfs, platform::UniqueDescriptor& held);

}  // namespace qvn::usb1
