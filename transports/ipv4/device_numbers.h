// The handles of the devices that this transport has found, kept in the registry for all processes and times.
#pragma once

#include <cstdint>
#include <string>

namespace qvn::ipv4 {

// Handles are shared by all transports; each numbers its devices in a range of its own.
inline constexpr std::uint32_t kFirstHandle = 40001;

// The handle of the device with that serial number: the same for ever, a new one for a new device. 0, or the
// registry's code (2 when the library is not installed).
std::uint32_t handleOf(const std::string& serial, std::uint32_t& handle);

}  // namespace qvn::ipv4
