// The settings of this transport, all in milliseconds, and where it keeps what it must remember.
#pragma once

#include <cstdint>

#include "qvn/transport/settings.h"

namespace qvn::ipv4 {

inline constexpr char kSettingsKey[] = "Ip1\\Settings\\";
inline constexpr char kDevicesKey[] = "Ip1\\Devices\\";    // serial number -> handle
inline constexpr char kServicesKey[] = "Ip1\\Services\\";  // serial number -> name of the announced service
inline constexpr char kSearchValue[] = "Search";           // the search text that discovery uses by default

struct Timeouts {
  std::uint32_t connect;     // until the device has accepted a connection
  std::uint32_t npaWrite;    // until a packet, command or document has gone out
  std::uint32_t reply;       // from the packet, command or document to its reply
  std::uint32_t printWrite;  // without the device taking any print data
};

// As they are set now.
inline Timeouts currentTimeouts() {
  return {.connect = transportSetting(kSettingsKey, "NpaTimeout", 5000),
          .npaWrite = transportSetting(kSettingsKey, "NpaWriteTimeout", 10000),
          .reply = transportSetting(kSettingsKey, "ReadTimeout", 15000),
          .printWrite = transportSetting(kSettingsKey, "PJLWriteTimeout", 30000)};
}

inline std::uint32_t discoveryTimeout() {
  return transportSetting(kSettingsKey, "9200UnicastDiscoveryTimeout", 1000);
}

}  // namespace qvn::ipv4
