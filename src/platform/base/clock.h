// The one clock of the process. Every wait, sleep, tick count and time of day goes through it, so a test that
// replaces it decides how time passes.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>

#include "platform/base/export.h"

namespace qvn::platform {

using Milliseconds = std::uint32_t;

// A wait for this long has no limit.
inline constexpr Milliseconds kInfinite = 0xFFFFFFFF;

class QVN_PLATFORM_API Clock {
 public:
  virtual ~Clock();

  // Milliseconds since an arbitrary fixed moment; never goes back.
  virtual std::uint64_t monotonicMilliseconds() = 0;

  // The time of day.
  virtual std::chrono::system_clock::time_point now() = 0;

  // Blocks the caller for `duration`; 0 only yields.
  virtual void sleep(Milliseconds duration) = 0;

  // Blocks until `ready` holds or `timeout` has passed; returns what `ready` gives last. `lock` is held on
  // entry, whenever `ready` is called, and on return. Whoever makes `ready` true notifies `condition`.
  virtual bool wait(std::unique_lock<std::mutex>& lock, std::condition_variable& condition,
                    Milliseconds timeout, const std::function<bool()>& ready) = 0;
};

// The clock in force; the system's own until replaced.
QVN_PLATFORM_API Clock& clock();

// Puts `replacement` in force (null: the system's own) and returns the one replaced. For tests, before any
// thread that waits is started; the caller keeps ownership and outlives all users.
QVN_PLATFORM_API Clock* replaceClock(Clock* replacement);

// Whether another clock than the system's is in force. Only this layer asks: what the system itself waits for
// goes by the system's clock.
bool clockIsReplaced();

// The clock's monotonic milliseconds cut to 32 bits; wraps every 49.7 days.
QVN_PLATFORM_API std::uint32_t tickCount();

// clock().sleep(duration).
QVN_PLATFORM_API void sleep(Milliseconds duration);

// A moment in the local time zone, as a log line shows it.
struct LocalTime {
  int year;
  int month;  // 1 to 12
  int day;
  int hour;
  int minute;
  int second;
  int millisecond;
};
QVN_PLATFORM_API LocalTime localTime(std::chrono::system_clock::time_point moment);

}  // namespace qvn::platform
