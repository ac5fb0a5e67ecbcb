// The numbers that a transport gives its devices: kept in the registry for all processes and times.
#pragma once

#include <cstdint>
#include <string>

namespace qvn {

// The number of the device that `identity` (its serial number, say) names: the same for ever, and for a new
// device the one behind the highest so far, or `firstNumber`. `key` is where the transport's numbers are,
// relative to the library's root ("Ip1\\Devices\\"): a DWORD per identity, which is compared without case.
//
// Printers' handles are unique among all transports, so each begins at a number of its own (IPv4: 40001). A
// printer's scanner has the printer's number and 400, its HID that and 800.
//
// 0, 87 for an empty identity or one of more than 255 bytes, 2 while the library is not installed, or the
// registry's code. `isNew`, if given, tells whether the device has got its number now. Any thread; processes
// that find two devices at once never give them one number.
std::uint32_t deviceNumber(const char* key, const std::string& identity, std::uint32_t firstNumber,
                           std::uint32_t& number, bool* isNew = nullptr);

}  // namespace qvn
