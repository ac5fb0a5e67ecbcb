// The library's log, as transports write to it.
#pragma once

#include <cstdint>
#include <string>

namespace qvn {

// A level is one bit of a mask.
namespace log_level {
inline constexpr std::uint32_t kError = 1;
inline constexpr std::uint32_t kTrace = 2;  // entry and exit of operations
inline constexpr std::uint32_t kDetail = 8;
}  // namespace log_level

// Whether a line of that component and level is to be written: errors always, others as the log's settings
// say. The component is a short name of the transport's own, by which an administrator turns its lines on
// (for example "Ip1Transport"); one that the log does not know has the mask 0 until the registry says
// otherwise. Ask before composing a text that costs something. False while the library is not initialised.
bool isTransportLogged(const char* component, std::uint32_t level) noexcept;

// Writes one line, if it is wanted, into the file and in the form that the library's own lines have; control
// characters in the text become blanks. A line that cannot be written is lost.
//
// Both: any thread, with the transport's own locks held or not. A line waits for other processes that write
// one.
void transportLog(const char* component, std::uint32_t level, const std::string& text) noexcept;

}  // namespace qvn
