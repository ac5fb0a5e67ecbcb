// Notification: a change in the library's view of a device, told to the clients that registered.
#pragma once

#include <cstdint>

#include "qvn/transport/data.h"

namespace qvn {

struct Notification {
  std::uint32_t handle = 0;
  std::uint32_t category = 0;
  std::uint32_t id = 0;
  Data data;
};

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

}  // namespace qvn
