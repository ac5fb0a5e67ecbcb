// The settings of this transport, all in milliseconds, and where it keeps what it must remember.
#pragma once

#include <cstdint>

#include "qvn/transport/settings.h"
#include "shared/channel/place.h"

namespace qvn::ipv4 {

inline constexpr char kSettingsKey[] = "Ip1\\Settings\\";
inline constexpr char kDevicesKey[] = "Ip1\\Devices\\";    // serial number -> handle
inline constexpr char kServicesKey[] = "Ip1\\Services\\";  // serial number -> name of the announced service
inline constexpr char kSearchValue[] = "Search";           // the search text that discovery uses by default

// As they are set now.
inline shared::Timeouts currentTimeouts() {
  return {.connect = transportSetting(kSettingsKey, "NpaTimeout", 5000),
          .npaWrite = transportSetting(kSettingsKey, "NpaWriteTimeout", 10000),
          .reply = transportSetting(kSettingsKey, "ReadTimeout", 15000),
          .printWrite = transportSetting(kSettingsKey, "PJLWriteTimeout", 30000)};
}

inline std::uint32_t discoveryTimeout() {
  return transportSetting(kSettingsKey, "9200UnicastDiscoveryTimeout", 1000);
}

}  // namespace qvn::ipv4
