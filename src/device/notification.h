// The categories and ids of the notifications that the library itself raises.
#pragma once

#include <cstdint>

#include "qvn/transport/notification.h"

namespace qvn {

// Category 1: what a printer's job does.
namespace job_status {
inline constexpr std::uint32_t kCategory = 1;
inline constexpr std::uint32_t kBusyPrinting = 1;  // a state was entered: its code
inline constexpr std::uint32_t kError = 2;
inline constexpr std::uint32_t kIdle = 3;
inline constexpr std::uint32_t kStartJob = 4;
inline constexpr std::uint32_t kFirstData = 5;
inline constexpr std::uint32_t kEndJob = 6;
inline constexpr std::uint32_t kCancelled = 7;
inline constexpr std::uint32_t kTrueEndOfJob = 8;
}  // namespace job_status

// Category 2: the events of HIDs; their ids are the device's.
namespace hid_event {
inline constexpr std::uint32_t kCategory = 2;
}  // namespace hid_event

// Category 3: how far a scan is, told to the clients of the printer in the same device.
namespace scan_progress {
inline constexpr std::uint32_t kCategory = 3;
inline constexpr std::uint32_t kStarted = 50;
inline constexpr std::uint32_t kDataEnded = 51;
inline constexpr std::uint32_t kJobEnded = 53;
}  // namespace scan_progress

}  // namespace qvn
