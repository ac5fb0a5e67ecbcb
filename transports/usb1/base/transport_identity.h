// What the library knows this transport by.
#pragma once

#include "shared/base/device_text.h"

namespace qvn::usb1 {

inline constexpr shared::TransportIdentity kTransport{"USB1", "LOCAL_TRANSPORT"};

inline constexpr char kLogComponent[] = "Usb1Transport";
inline constexpr char kDiscoveryLogComponent[] = "Usb1TransportDiscovery";

// Behind the node that this user may not open.
inline constexpr char kNoPermission[] =
    ": no permission; the udev rule 70-qvn-usb.rules of the package qvn-usb gives it to the group lp";

}  // namespace qvn::usb1
