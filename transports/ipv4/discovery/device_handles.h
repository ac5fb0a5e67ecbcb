// The devices that this transport has found, kept in the registry by serial number for all processes and
// times: their handles and, of those known only as announced services, the services' names.
#pragma once

#include <cstdint>
#include <string>

namespace qvn::ipv4 {

// Handles are shared by all transports; each numbers its devices in a range of its own.
inline constexpr std::uint32_t kFirstHandle = 40001;

// The handle of a device that has answered: the same for ever, a new one for a new device. From now on an
// announcement of its serial number counts no more: it says less than the device does. 0, or the registry's
// code (2 when the library is not installed).
std::uint32_t handleOf(const std::string& serial, std::uint32_t& handle);

// The handle of a device that was announced as a service. 1168 when it has answered some day.
std::uint32_t handleOfService(const std::string& serial, const std::string& serviceName,
                              std::uint32_t& handle);

// The name of the service that announced the device; empty when it has answered, or is not known.
std::string serviceNameOf(const std::string& serial);

}  // namespace qvn::ipv4
