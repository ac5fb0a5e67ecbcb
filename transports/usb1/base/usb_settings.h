// The settings of this transport, times in milliseconds, and where it keeps what it must remember.
#pragma once

#include <algorithm>
#include <cstdint>

#include "qvn/transport/settings.h"
#include "shared/channel/place.h"

namespace qvn::usb1 {

inline constexpr char kSettingsKey[] = "Usb1\\Settings\\";
inline constexpr char kDevicesKey[] = "Usb1\\Devices\\";  // what names the device -> handle

// As they are set now.
inline shared::Timeouts currentTimeouts() {
  return {.connect = 0,
          .npaWrite = transportSetting(kSettingsKey, "Usb1NpaWriteTimeout", 10000),
          .reply = transportSetting(kSettingsKey, "Usb1ReadTimeout", 15000),
          .printWrite = transportSetting(kSettingsKey, "Usb1PJLWriteTimeout", 30000)};
}

// How many bytes one transfer has.
inline std::uint32_t writeSize() {
  return std::clamp(transportSetting(kSettingsKey, "Usb1WriteSize", 65536), 1024u, 1048576u);
}
inline std::uint32_t readSize() {
  return std::clamp(transportSetting(kSettingsKey, "Usb1ReadSize", 16384), 1024u, 1048576u);
}

// Whether an interface may be taken from a driver of the system while nobody uses it.
inline bool mayDetachKernelDriver() {
  return transportSetting(kSettingsKey, "Usb1DetachKernelDriver", 1) != 0;
}

}  // namespace qvn::usb1
