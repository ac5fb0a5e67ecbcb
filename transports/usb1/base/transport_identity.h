// What the library knows this transport by.
#pragma once

#include "shared/base/device_text.h"

namespace qvn::usb1 {

inline constexpr shared::TransportIdentity kTransport{"USB1", "LOCAL_TRANSPORT"};

inline constexpr char kLogComponent[] = "Usb1Transport";
inline constexpr char kDiscoveryLogComponent[] = "Usb1TransportDiscovery";

}  // namespace qvn::usb1
